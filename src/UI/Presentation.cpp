#include "Presentation.h"
