#include "host/commands/Commands.h"
