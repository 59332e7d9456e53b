#include "PanelKeyMap.h"
