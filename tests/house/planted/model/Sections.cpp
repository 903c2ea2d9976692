#include "georef/SensorModel.h"
#include <ceres/ceres.h>
