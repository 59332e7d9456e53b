#pragma once

#include "TestBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>

namespace tessly::test {

/// GNOME Shell with the program's extension, as far as that goes. It has a connection of its own
/// and answers from the event loop.
class FakeShell final : public QDBusVirtualObject
{
public:
    /// Takes the extension's name.
    explicit FakeShell(const TestBus& bus);
    ~FakeShell() override;

    // What it is like; all may change at any time.

    bool answers = true;
    /// What it answers in place of what it should.
    std::optional<QVariantList> nonsense = {};
    QList<int> pointer = {600, 400};
    QList<int> pointerMonitor = {0, 0, 1280, 800};
    QList<int> focusMonitor = {1280, 0, 1920, 1080};

    // What it and its user do.

    void enable();
    void disable();
    /// Shows a window of a program with this class, and brings it to the front.
    void show(quint64 window, const QString& windowClass);
    /// The same, with more or something else told of it.
    void show(quint64 window, const QString& windowClass, const QVariantMap& more);
    /// Takes the keyboard for itself, or gives it back.
    void grabKeyboard(bool isGrabbed);
    void bringToFront(quint64 window);
    /// Nothing is in front any more.
    void showNothing();
    void close(quint64 window);
    /// Says anything.
    void send(const QString& signal, const QVariantList& arguments);
    /// Answers what has been left without an answer.
    void answerLate();

    /// The calls that came, by their method.
    [[nodiscard]] int calls(const QString& method) const;

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override;
    [[nodiscard]] QString introspect(const QString& path) const override;

private:
    [[nodiscard]] QVariantMap front() const;
    void tellFront();
    void answer(const QDBusMessage& message);

    QString m_address;
    QDBusConnection m_bus{QString()};
    QList<QDBusMessage> m_unanswered;
    QStringList m_calls;
    QMap<quint64, QVariantMap> m_windows;
    /// 0 for none.
    quint64 m_front = 0;
    bool m_isGrabbed = false;
};

} // namespace tessly::test
