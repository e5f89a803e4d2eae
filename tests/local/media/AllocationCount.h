#pragma once

#include <cstddef>

namespace lumo::test {

/// How often the calling thread has used `operator new`.
std::size_t allocationsOfThisThread();

}  // namespace lumo::test
