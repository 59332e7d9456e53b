#pragma once

#include "AppSettings.h"
#include "ClipPayload.h"
#include "ImageConverter.h"
#include "Pasteboard.h"

#include <QCoroTask>

#include <functional>
#include <optional>

namespace tessly {

/// Reads what is to be recorded of a content of the pasteboard, within the user's limits. Main
/// thread only.
///
/// In two steps, since a newer content can be read while an image of this one is being decoded.
class PayloadReader
{
public:
    /// What the pasteboard has handed over.
    struct Content
    {
        ClipPayload::Fields fields = {};
        /// An image that is still to be decoded.
        std::optional<QByteArray> image = {};
        /// Why nothing is to be recorded, or why there is no image; words for the log.
        const char* loss = nullptr;
        bool isDropped = false;
    };
    struct Result
    {
        /// None if there is nothing to be recorded.
        std::optional<ClipPayload> payload = {};
        /// Why, if nothing of the user's settings says so; words for the log.
        const char* loss = nullptr;
    };

    /// As a loss: the owner did not answer in time, or something else was copied.
    static const char* const unreadable;
    /// As a loss: other programs have the memory, or the content is that large.
    static const char* const noMemory;

    /// All of it must outlive what is being read.
    PayloadReader(
        Pasteboard& pasteboard, const AppSettings& settings, ImageConverter& imageConverter)
        : m_pasteboard(pasteboard)
        , m_settings(settings)
        , m_imageConverter(imageConverter)
    {
    }

    /// Asks for nothing more once `isWanted` says no; what it answers then is of no use.
    [[nodiscard]] QCoro::Task<Content>
    read(qint64 changeCount, std::function<bool()> isWanted) const;
    [[nodiscard]] QCoro::Task<Result> payload(Content content) const;

private:
    [[nodiscard]] qint64 byteLimit() const;

    Pasteboard& m_pasteboard;
    const AppSettings& m_settings;
    ImageConverter& m_imageConverter;
};

} // namespace tessly
