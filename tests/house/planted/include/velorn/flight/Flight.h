#include "flight/strips/GpsWeek.h"
