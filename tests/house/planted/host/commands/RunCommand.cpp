#include "flight/chain/Inputs.h"
