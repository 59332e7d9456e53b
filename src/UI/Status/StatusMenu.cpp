#include "StatusMenu.h"

using namespace Qt::StringLiterals;

namespace tessly {

std::vector<StatusMenuItem> makeStatusMenu(bool isPaused)
{
    return {
        {.title = u"Open Quick Paste"_s, .action = u"openQuickPaste"_s},
        {.title = isPaused ? u"Resume Clipboard Recording"_s : u"Pause Clipboard Recording"_s,
         .action = u"toggleMonitoring"_s},
        {.isSeparator = true},
        {.title = u"Clear Unpinned History"_s, .action = u"clearHistory"_s},
        {.title = u"Settings…"_s, .action = u"openSettings"_s, .keyText = u","_s},
        {.isSeparator = true},
        {.title = u"Quit Tessly"_s, .action = u"quitApplication"_s, .keyText = u"q"_s},
    };
}

} // namespace tessly
