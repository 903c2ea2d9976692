#include <velorn/flight/Flight.h>
