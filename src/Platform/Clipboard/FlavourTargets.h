#pragma once

#include "Pasteboard.h"

#include <QByteArrayView>

#include <span>

namespace tessly {

// The names under which other programs offer and ask for content: MIME types, and on X11 the older
// names of text. They are the same on every display server.

/// The names under which a flavour is offered, the one to ask for first in front.
[[nodiscard]] std::span<const QByteArrayView> targetsOf(Flavour flavour);

/// As `targetsOf`, for lists of files. The first is a list as RFC 2483 has it; the others have the
/// operation ("copy", "cut") on a line of their own before the URLs.
[[nodiscard]] std::span<const QByteArrayView> fileListTargets();

/// Offered by password managers with what is not to be kept.
[[nodiscard]] QByteArrayView passwordHintTarget();

/// Whether an offered name is the wanted one. Names are exact, but for MIME types with a parameter,
/// which programs spell in any case.
[[nodiscard]] bool isSameTarget(QByteArrayView offered, QByteArrayView wanted);

/// Whether text under this name is ISO 8859-1; all other text is UTF-8.
[[nodiscard]] bool isLatin1Target(QByteArrayView target);

/// The names as the monitor gets them: those offered, and Pasteboard::concealedType where a
/// password manager asks for it.
[[nodiscard]] QSet<QString> typeNames(const QByteArrayList& offered);

/// The URLs of a file list, offered under this name: the absolute `file:` ones, in order. What
/// RFC 3986 does not allow in a path, programs write all the same: it is percent-encoded.
[[nodiscard]] QByteArrayList fileURLs(QByteArrayView target, const QByteArray& list);

/// The URLs as the result of a read: absent if there are none, too large if they have more than
/// `byteLimit` bytes.
[[nodiscard]] ReadResult<QByteArrayList> limitedFileURLs(QByteArrayList urls, qint64 byteLimit);

/// Whether bytes begin as every PNG does.
[[nodiscard]] bool isPNG(QByteArrayView bytes);

} // namespace tessly
