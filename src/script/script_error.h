// A fault of the script itself (a question with no answer queued, an unknown name, a malformed
// line). It is deliberately not a std::exception: the handlers turn those into the program's
// message and go on, while this one must stop the whole script.
#pragma once

#include <string>
#include <utility>

namespace ardel {

class ScriptError {
  public:
    explicit ScriptError(std::string what) : what_(std::move(what)) {}
    const std::string& What() const { return what_; }

  private:
    std::string what_;
};

}  // namespace ardel
