#pragma once

#include <array>

/// What scripted participants are called.
inline constexpr std::array<const char*, 16> kNames = {"Anna",  "Ben",  "Carla", "David", "Emma",  "Finn",
                                                       "Greta", "Hugo", "Ida",   "Jonas", "Klara", "Leo",
                                                       "Mia",   "Noah", "Olga",  "Paul"};
