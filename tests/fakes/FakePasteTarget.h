#pragma once

#include "PasteTarget.h"

#include <optional>
#include <utility>

namespace tessly::test {

/// An application that is in front when the test says so. For tests that link the desktop's
/// library.
class FakePasteTarget final : public PasteTarget
{
public:
    explicit FakePasteTarget(QString id, PasteChord chord = PasteChord::controlV)
        : m_id(std::move(id))
        , m_chord(chord)
    {
    }

    /// As `pasteChord` unless it is set.
    void setTextPasteChord(PasteChord chord) { m_textChord = chord; }
    void setActive(bool active) { m_isActive = active && !m_isTerminated; }
    void terminate()
    {
        m_isTerminated = true;
        m_isActive = false;
    }

    [[nodiscard]] std::optional<QString> localizedName() const override { return m_id; }
    [[nodiscard]] std::optional<QString> bundleIdentifier() const override { return m_id; }
    [[nodiscard]] bool isActive() const override { return m_isActive; }
    [[nodiscard]] bool isTerminated() const override { return m_isTerminated; }
    void activate() override { setActive(true); }
    [[nodiscard]] PasteChord pasteChord() const override { return m_chord; }
    [[nodiscard]] PasteChord textPasteChord() const override
    {
        return m_textChord.value_or(m_chord);
    }

private:
    QString m_id;
    PasteChord m_chord;
    std::optional<PasteChord> m_textChord = {};
    bool m_isActive = false;
    bool m_isTerminated = false;
};

} // namespace tessly::test
