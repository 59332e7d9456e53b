#pragma once

#include <QByteArrayView>
#include <QString>

namespace tessly {

/// The text of an HTML document or a piece of one, in its lines: without tags, comments, scripts
/// and style sheets. Paragraphs stand apart by a blank line, cells by a tab; items of lists have a
/// bullet. Nothing is looked up, loaded or run. Any bytes will do, and may be cut anywhere; the
/// time grows with their number alone, and no stack with what is nested in them.
///
/// Ends once there are `length` characters (UTF-16 units) or more.
[[nodiscard]] QString textOfHTML(QByteArrayView html, qsizetype length);

} // namespace tessly
