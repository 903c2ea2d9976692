#include "adjustment/georef/SensorModel.h"
#include <ceres/ceres.h>
