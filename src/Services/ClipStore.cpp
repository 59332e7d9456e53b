#include "ClipStore.h"
