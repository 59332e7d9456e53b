#include "AppSettings.h"
