// How a window runs a handler of the command table: by the handler's name.
#pragma once

#include <functional>
#include <string>

namespace ardel {

using RunHandler = std::function<void(const std::string&)>;

}  // namespace ardel
