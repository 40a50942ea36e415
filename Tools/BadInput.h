#ifndef TOOLS_BAD_INPUT_H
#define TOOLS_BAD_INPUT_H

#include <stdexcept>
#include <string>

namespace Coresim {

/// What a person typed or wrote can't be used; what() is the reason, ready to be shown.
class CBadInput : public std::runtime_error {
public:
    explicit CBadInput(std::string const & reason) : std::runtime_error(reason) {}
};

} // namespace Coresim

#endif
