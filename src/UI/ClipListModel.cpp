#include "ClipListModel.h"
