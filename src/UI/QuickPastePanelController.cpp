#include "QuickPastePanelController.h"
