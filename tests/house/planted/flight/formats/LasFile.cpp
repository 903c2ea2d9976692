#include "adjustment/model/LineReader.h"
#include <nlohmann/json.hpp>
