#include "adjustment/model/Sections.h"
