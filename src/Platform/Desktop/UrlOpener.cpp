#include "UrlOpener.h"

#include <QByteArray>
#include <QFileInfo>
#include <QLibrary>
#include <QLoggingCategory>

#include <gio/gio.h>

#include <thread>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcUrlOpener, "com.brackmoor.tessly.UrlOpener")

/// The few functions of GIO that are needed, by their names there.
struct Gio
{
    decltype(&g_app_info_get_default_for_uri_scheme) defaultForScheme = nullptr;
    decltype(&g_app_info_get_default_for_type) defaultForType = nullptr;
    decltype(&g_content_type_guess) guessContentType = nullptr;
    decltype(&g_app_info_launch_uris) launch = nullptr;
    decltype(&g_object_unref) unref = nullptr;
    decltype(&g_error_free) freeError = nullptr;
    decltype(&g_free) free = nullptr;
    decltype(&g_list_free) freeList = nullptr;
    decltype(&g_list_append) append = nullptr;

    /// False if the library is not there.
    bool load()
    {
        // Never unloaded: GLib's types cannot be taken back.
        QLibrary library(u"gio-2.0"_s, 0);
        library.setLoadHints(QLibrary::PreventUnloadHint);
        if (!library.load()) {
            qCWarning(lcUrlOpener).noquote() << library.errorString();
            return false;
        }
        const auto resolve = [&library](auto& function, const char* name) {
            function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(
                library.resolve(name));
            return function != nullptr;
        };
        return resolve(defaultForScheme, "g_app_info_get_default_for_uri_scheme") &&
               resolve(defaultForType, "g_app_info_get_default_for_type") &&
               resolve(guessContentType, "g_content_type_guess") &&
               resolve(launch, "g_app_info_launch_uris") && resolve(unref, "g_object_unref") &&
               resolve(freeError, "g_error_free") && resolve(free, "g_free") &&
               resolve(freeList, "g_list_free") && resolve(append, "g_list_append");
    }
};

GAppInfo* programFor(const Gio& gio, const QUrl& url)
{
    if (!url.isLocalFile()) {
        return gio.defaultForScheme(url.scheme().toLatin1().constData());
    }
    // By the name alone: looking into the file is that program's business.
    const QString path = url.toLocalFile();
    if (QFileInfo(path).isDir()) {
        return gio.defaultForType("inode/directory", FALSE);
    }
    gchar* type = gio.guessContentType(path.toUtf8().constData(), nullptr, 0, nullptr);
    GAppInfo* program = gio.defaultForType(type, FALSE);
    gio.free(type);
    return program;
}

void launch(const Gio& gio, GAppInfo* program, QByteArray url)
{
    GList* urls = gio.append(nullptr, url.data());
    GError* error = nullptr;
    if (gio.launch(program, urls, nullptr, &error) == FALSE) {
        // The URL itself is not logged: it may be the user's.
        qCWarning(
            lcUrlOpener, "could not start a program: %s",
            error != nullptr ? error->message : "no reason given");
    }
    if (error != nullptr) {
        gio.freeError(error);
    }
    gio.freeList(urls);
    gio.unref(program);
}

} // namespace

bool openWithDesktop(const QUrl& url)
{
    if (!url.isValid() || url.scheme().isEmpty()) {
        return false;
    }
    Gio gio;
    if (!gio.load()) {
        return false;
    }
    GAppInfo* program = programFor(gio, url);
    if (program == nullptr) {
        return false;
    }
    // Starting may talk to the session bus, which may hang. The thread owns all it uses, and nobody
    // has to wait for it at the end.
    std::thread(launch, gio, program, url.toEncoded()).detach();
    return true;
}

} // namespace tessly
