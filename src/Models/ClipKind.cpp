#include "ClipKind.h"
