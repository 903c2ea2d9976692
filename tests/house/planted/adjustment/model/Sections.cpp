#include <ceres/ceres.h>
