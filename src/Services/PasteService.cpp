#include "PasteService.h"
