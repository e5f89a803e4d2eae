#pragma once

#include <cstddef>

/// The calls of operator new in this program so far, on all threads. A program that asks compiles
/// AllocationCount.cpp, which replaces the operators, into itself.
std::size_t allocationCount();

/// Those among them for at least 64 KiB: the pixels of a picture, for example.
std::size_t largeAllocationCount();

/// Those among them whose memory has not been given back yet.
std::size_t liveAllocationCount();
