#include "RescueNotices.h"

#include <QLoggingCategory>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(log, "com.brackmoor.tessly.RescueNotices")

const QString unseenKey = u"unseenRescues"_s;

} // namespace

RescueNotices::RescueNotices(UserDefaults& defaults, AppModel& model)
    : m_defaults(defaults)
    , m_model(model)
    , m_unseen(defaults.string(unseenKey).value_or(QString()).split(u'\n', Qt::SkipEmptyParts))
{
    connect(&m_model, &AppModel::noticeDismissed, this, &RescueNotices::dismissed);
    for (const QString& notice : std::as_const(m_unseen)) {
        show(notice.section(u'\t', 0, 0), notice.section(u'\t', 1));
    }
}

RescueNotices::~RescueNotices() = default;

void RescueNotices::tell(const QString& folder, const QString& message)
{
    qCWarning(log, "%s", qUtf8Printable(message));
    const QString beginning = folder + u'\t';
    const QString notice = beginning + message;
    bool isReplaced = false;
    for (QString& earlier : m_unseen) {
        if (earlier.startsWith(beginning)) {
            earlier = notice;
            isReplaced = true;
        }
    }
    if (!isReplaced) {
        m_unseen.append(notice);
    }
    store();
    show(folder, message);
}

void RescueNotices::dismissed(const QString& folder)
{
    m_unseen.removeIf([beginning = folder + u'\t'](const QString& notice) {
        return notice.startsWith(beginning);
    });
    store();
}

void RescueNotices::show(const QString& folder, const QString& message)
{
    m_model.showNotice(folder, {message, AppModel::BannerKind::warning});
}

void RescueNotices::store()
{
    if (m_unseen.isEmpty()) {
        m_defaults.remove(unseenKey);
    } else {
        m_defaults.setString(unseenKey, m_unseen.join(u'\n'));
    }
}

} // namespace tessly
