#include "model/Sections.h"
