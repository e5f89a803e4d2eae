#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"

int main() { return LMRTCEngine::sharedInstance() == nullptr ? 0 : 1; }
