#pragma once

#include <QProcess>
#include <QProcessEnvironment>

/// A child process. The destructor terminates it, and the kernel does if the test is killed.
class Child final : public QProcess
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Child)

public:
    explicit Child(QObject *parent = nullptr);
    ~Child() override;

    /// Starts the program. Returns false if that fails.
    [[nodiscard]] bool launch(const QString &program, const QStringList &arguments = {});

    /// Returns the test's environment without the variables that lead to the desktop session of the
    /// user who runs the tests. Programs keep their files in `home`.
    [[nodiscard]] static QProcessEnvironment privateEnvironment(const QString &home);

    /// Terminates the program, and kills it if it does not exit in time.
    void stop();
};
