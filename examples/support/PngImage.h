#pragma once

#include <memory>
#include <string>

#include "LumoRTCLibWrapper/platform/system/UIImage.h"

/// The picture in a PNG file; null when it cannot be read.
std::shared_ptr<const UIImage> readPng(const std::string& path);
