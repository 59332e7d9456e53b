#include "PanelModel.h"
