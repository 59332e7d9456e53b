#include "IniUserDefaults.h"
