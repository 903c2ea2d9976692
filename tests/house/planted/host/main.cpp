#include "config/InputParameterText.h"
