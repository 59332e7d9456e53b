#include "InstalledBundle.h"

#include "Workspace.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

QString executablePath(const QString& link)
{
    QString path = QFile::symLinkTarget(link);
    // What the kernel adds once the file was replaced, as by an update right after the start.
    constexpr auto replaced = " (deleted)"_L1;
    if (path.endsWith(replaced) && !QFile::exists(path)) {
        path.chop(replaced.size());
    }
    return path;
}

} // namespace

InstalledBundle::InstalledBundle(const QString& link)
    : m_path(executablePath(link))
{
}

InstalledBundle::~InstalledBundle() = default;

std::optional<QString> InstalledBundle::bundleIdentifier() const
{
    return ownBundleIdentifier;
}

QVariant InstalledBundle::objectForInfoDictionaryKey(const QString& key) const
{
    if (key == "CFBundleShortVersionString"_L1) {
        return u"" TESSLY_VERSION ""_s;
    }
    if (key == "CFBundleVersion"_L1) {
        return u"" TESSLY_BUILD_NUMBER ""_s;
    }
    return {};
}

} // namespace tessly
