#pragma once

#include <QObject>
#include <QUrl>

/// Opens the links of all views and labels, and reports those that no program opens.
///
/// QTextBrowser and QLabel ignore the result of `QDesktopServices::openUrl`, so this is the handler
/// of the links' schemes. Only one object may exist.
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
    /// Emitted when no program opens `url`.
    void failed(const QUrl &url);
};
