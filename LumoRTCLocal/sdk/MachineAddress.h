#pragma once

#include <string>

namespace lumo {

/// The machine's first IPv4 address that is not the loopback's; "127.0.0.1" when there is none.
std::string machineAddress();

}  // namespace lumo
