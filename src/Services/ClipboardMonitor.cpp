#include "ClipboardMonitor.h"
