#include <velorn/flight/Flight.h>
#include "../surfaces/Tiles.h"
