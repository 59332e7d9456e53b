#pragma once

#include <QByteArray>

#include <optional>

namespace tessly {

/// What a URL of a file copy says about its file.
struct FileURL
{
    /// The file-system path: percent-decoded, without a slash at its end. File names are bytes and
    /// need not be UTF-8; an encoded NUL stays encoded, since no path can hold one.
    QByteArray path;
    /// The path's last component, the file's name; "/" for the root.
    QByteArray lastPathComponent;

    /// None if `url` is no URL by RFC 3986.
    [[nodiscard]] static std::optional<FileURL> parse(QByteArrayView url);

    bool operator==(const FileURL&) const = default;
};

} // namespace tessly
