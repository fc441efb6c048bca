#pragma once

#include <QObject>
#include <QUrl>

/// Opens the links that are clicked anywhere in the program, and reports those that nothing opens.
///
/// Views and labels that open external links themselves ignore whether that succeeded, so the
/// object handles the links' schemes for `QDesktopServices`. There is one at a time.
class LinkOpener final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LinkOpener)

public:
    explicit LinkOpener(QObject *parent);
    ~LinkOpener() override;

    /// Called by `QDesktopServices`.
    Q_INVOKABLE void open(const QUrl &url);

signals:
    void failed(const QUrl &url);
};
