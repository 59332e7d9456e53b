#include "AppModel.h"
