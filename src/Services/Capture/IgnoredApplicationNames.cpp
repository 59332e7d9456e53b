#include "IgnoredApplicationNames.h"

#include <QLatin1StringView>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// What an entry of the built-in list stands for here. All in lower case.
struct Program
{
    QLatin1StringView entry;
    QLatin1StringView name;
};

// The built-in entries are the identifiers that these programs have elsewhere. Where they bear the
// same one here, its line is missing: the entry matches by itself.
constexpr std::array programs = {
    Program{"com.1password.1password"_L1, "1password"_L1},
    Program{"com.agilebits.onepassword7"_L1, "1password"_L1},
    Program{"com.bitwarden.desktop"_L1, "bitwarden"_L1},
    // Its window's class, where the desktop entry is not installed.
    Program{"org.keepassxc.keepassxc"_L1, "keepassxc"_L1},
    // The desktop's own keepers of passwords and keys.
    Program{"com.apple.passwords"_L1, "org.gnome.seahorse.application"_L1},
    Program{"com.apple.passwords"_L1, "org.gnome.world.secrets"_L1},
    Program{"com.apple.passwords"_L1, "org.kde.kwalletmanager"_L1},
    Program{"com.apple.passwords"_L1, "org.kde.kwalletmanager5"_L1},
    Program{"com.apple.keychainaccess"_L1, "org.gnome.seahorse.application"_L1},
    Program{"com.apple.keychainaccess"_L1, "org.gnome.world.secrets"_L1},
    Program{"com.apple.keychainaccess"_L1, "org.kde.kwalletmanager"_L1},
    Program{"com.apple.keychainaccess"_L1, "org.kde.kwalletmanager5"_L1},
};

} // namespace

bool isIgnoredApplication(const QStringList& names, const QSet<QString>& ignored)
{
    return std::ranges::any_of(names, [&ignored](const QString& name) {
        const QString folded = name.toLower();
        return ignored.contains(folded) ||
               std::ranges::any_of(programs, [&](const Program& program) {
                   return program.name == folded && ignored.contains(program.entry);
               });
    });
}

} // namespace tessly
