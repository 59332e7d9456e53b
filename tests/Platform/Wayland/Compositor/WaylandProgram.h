#pragma once

#include "WaylandDataControl.h"
#include "WaylandEventLoop.h"
#include "WaylandPipeReader.h"
#include "WaylandPipeWriter.h"
#include "WaylandRegistry.h"

#include <QByteArray>
#include <QByteArrayList>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct wl_seat;

namespace tessly::test {

/// Another program that copies and pastes by data control, on a connection of its own, and does
/// with what it offers whatever it is told.
class WaylandProgram
{
public:
    enum class Manner {
        serves,
        /// Closes the pipe without a word.
        refuses,
        /// Keeps the pipe open and writes nothing.
        hangs,
        /// Writes the bytes and keeps the pipe open.
        stalls,
        /// Writes the bytes one at a time, with a pause before each.
        dribbles,
        /// Writes the bytes over and over.
        neverEnds,
    };
    struct Offered
    {
        QByteArray type;
        QByteArray bytes = {};
        Manner manner = Manner::serves;
    };
    enum class Life { stays, leavesAfterOneRead };

    /// `display` is the path of the compositor's socket. Throws WaylandError.
    explicit WaylandProgram(const std::string& display);
    ~WaylandProgram();
    WaylandProgram(const WaylandProgram&) = delete;
    WaylandProgram& operator=(const WaylandProgram&) = delete;

    void setPause(std::chrono::milliseconds pause) { m_pause = pause; }

    /// Returns once it owns the clipboard.
    void copy(const std::vector<Offered>& offered, Life life = Life::stays);
    /// As `copy`, but takes back what it offered before first.
    void replace(const std::vector<Offered>& offered);
    void copyText(const QByteArray& text) { copy({{.type = "UTF8_STRING", .bytes = text}}); }
    /// Withdraws what it offers, and returns once that is done.
    void takeBack();
    /// Goes on with what `stalls`, to the end.
    void closePipes();
    /// Ends its connection.
    void leave();

    /// The types on the clipboard now.
    [[nodiscard]] QByteArrayList types();
    /// What it gets that asks for a type; none if that is not offered.
    [[nodiscard]] std::optional<QByteArray> paste(const QByteArray& type = "UTF8_STRING");
    /// The same of PRIMARY.
    [[nodiscard]] std::optional<QByteArray> pastePrimary(const QByteArray& type = "UTF8_STRING");
    /// Makes a text PRIMARY; returns once it is.
    void copyAsPrimary(const QByteArray& text);
    /// Has the clipboard's content written into a file, which is closed here.
    void receive(const QByteArray& type, int file);

    /// How often it was asked for anything.
    [[nodiscard]] int sends() const { return m_sends; }
    /// How many bytes it has been rid of that it writes without end or dribbles.
    [[nodiscard]] qint64 written() const { return m_written; }
    /// Whether a pipe that it was given could refuse to take more.
    [[nodiscard]] bool isGivenNonBlocking() const { return m_isGivenNonBlocking; }
    /// Whether a reader has closed its end before the content's.
    [[nodiscard]] bool isCutOff() const { return m_isCutOff; }

private:
    template <typename Job>
    auto onLoop(Job job);
    void settle();
    void offer(const std::vector<Offered>& offered, Life life);
    void send(const Offered& offered, int file);
    void dribble(int file, const QByteArray& bytes, qsizetype index);
    void writeWithoutEnd(int file, const QByteArray& bytes);

    WaylandEventLoop m_loop;
    std::unique_ptr<WaylandRegistry> m_registry;
    std::unique_ptr<WaylandDataControl> m_control;
    wl_seat* m_seat = nullptr;
    std::unique_ptr<WaylandDataDevice> m_device;
    std::unique_ptr<WaylandDataOffer> m_selection;
    std::unique_ptr<WaylandDataOffer> m_primary;
    std::unique_ptr<WaylandDataSource> m_source;
    std::unique_ptr<WaylandDataSource> m_primarySource;
    std::unique_ptr<WaylandPipeWriter> m_writer;
    std::vector<int> m_held;
    std::atomic<std::chrono::milliseconds> m_pause{std::chrono::milliseconds(100)};
    std::atomic<int> m_sends = 0;
    std::atomic<qint64> m_written = 0;
    std::atomic<bool> m_isGivenNonBlocking = false;
    std::atomic<bool> m_isCutOff = false;
};

} // namespace tessly::test
