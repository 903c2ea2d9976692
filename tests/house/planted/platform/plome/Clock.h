#include <velorn/InputParameter.h>
