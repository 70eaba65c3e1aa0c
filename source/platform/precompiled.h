// What nearly every file of the library and of the machine includes, compiled once. A file still names what it uses.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/owned.h"
#include "platform/platform.h"
#include "platform/types.h"
