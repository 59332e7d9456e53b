#include "ClipPayload.h"
