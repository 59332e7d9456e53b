#pragma once

#include "ClipboardOwner.h"
#include "TestSupport.h"
#include "X11Pasteboard.h"
#include "XSession.h"

#include <gtest/gtest.h>

#include <memory>

namespace tessly::test {

/// An X server without a window manager, the pasteboard under test on it, and other programs.
class X11PasteboardTest : public testing::Test
{
protected:
    static constexpr qint64 noLimit = qint64{1} << 30;

    /// Deadlines that a hung owner does not stretch a test by, and a busy machine does not break.
    [[nodiscard]] static X11ClipboardDeadlines shortDeadlines();

    X11PasteboardTest();

    [[nodiscard]] XSession& session() { return m_session; }
    [[nodiscard]] X11Pasteboard& pasteboard() { return *m_pasteboard; }
    /// A new one in place of the old.
    void usePasteboard(const X11ClipboardDeadlines& deadlines);
    void endPasteboard() { m_pasteboard.reset(); }

    /// The change count once it has moved on from what it was before the action.
    template <typename Action>
    qint64 changed(Action action)
    {
        const qint64 before = pasteboard().changeCount();
        action();
        EXPECT_TRUE(waitUntil([&] { return pasteboard().changeCount() != before; }));
        return pasteboard().changeCount();
    }

    /// Another program, the one that owner() is from then on, copies; the content's change count.
    qint64 copied(const QStringList& arguments);
    [[nodiscard]] ClipboardOwner& owner() { return *m_owner; }

    [[nodiscard]] ReadResult<QByteArray>
    read(qint64 count, Flavour flavour, qint64 byteLimit = noLimit);
    [[nodiscard]] QByteArray readText(qint64 count)
    {
        return read(count, Flavour::plainText).value;
    }
    [[nodiscard]] std::optional<QSet<QString>> types(qint64 count);
    [[nodiscard]] ReadResult<QByteArrayList> readFiles(qint64 count);

    /// Writes, and returns once that is the content.
    qint64 written(const PasteboardItem& item);

    /// What xclip, another program, gets for a target; none if it is refused.
    [[nodiscard]] std::optional<QByteArray>
    xclip(const QString& target, const QString& selection = QStringLiteral("clipboard"));
    /// The lines that reader.py prints.
    QByteArrayList reader(const QStringList& arguments);

    /// Copies an ordinary text by another program, and expects that it is read.
    void expectThatTheNextCopyIsRead();

    /// Of the last write.
    WriteTicket m_ticket;

private:
    XSession m_session{XSession::WindowManager::none};
    std::unique_ptr<X11Pasteboard> m_pasteboard;
    std::unique_ptr<ClipboardOwner> m_owner;
};

/// What owner.py offers for "fill:BYTES".
[[nodiscard]] QByteArray filling(qsizetype size);

/// A line of reader.py about a value.
[[nodiscard]] QByteArray
readerLine(const QByteArray& target, const QByteArray& type, int format, const QByteArray& value);

} // namespace tessly::test
