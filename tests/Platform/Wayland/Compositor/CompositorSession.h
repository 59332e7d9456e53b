#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessly::test {

/// A real compositor of the tests' own without a screen, in a runtime folder of its own. Fails by
/// throwing std::runtime_error with what was missing.
class CompositorSession
{
public:
    CompositorSession(const CompositorSession&) = delete;
    CompositorSession& operator=(const CompositorSession&) = delete;

    /// The path of its socket.
    [[nodiscard]] std::string display() const { return m_socket.toStdString(); }

    /// Starts a program on it, gives it its input and returns it once it runs. It is killed when
    /// the returned object goes.
    [[nodiscard]] std::unique_ptr<QProcess>
    start(const QString& name, const QStringList& arguments, const QByteArray& input = {}) const;

    /// What a program prints; none if it fails.
    [[nodiscard]] std::optional<QByteArray>
    output(const QString& name, const QStringList& arguments) const;

protected:
    using Variables = std::initializer_list<std::pair<QString, QString>>;

    CompositorSession();
    ~CompositorSession();

    [[nodiscard]] QString path(const QString& file) const { return m_runtime.filePath(file); }

    /// Starts the compositor, and returns once it says that it is ready. It and the programs on it
    /// get these variables. `prepare` is called in its process before it becomes the program.
    void startCompositor(
        const QString& program, const QStringList& arguments, Variables variables,
        const std::function<void()>& prepare, const std::function<bool()>& isReady);
    /// As the compositor named it.
    void setSocket(const QString& name) { m_socket = path(name); }

private:
    QTemporaryDir m_runtime;
    QString m_socket;
    QProcessEnvironment m_environment;
    std::unique_ptr<QProcess> m_compositor;
};

} // namespace tessly::test
