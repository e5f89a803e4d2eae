#pragma once

#include <cstddef>

/// The calls of operator new in this program so far, on all threads. The operators stand in a file of their
/// own, where the compiler cannot pair an inlined one with its counterpart.
std::size_t allocationCount();
