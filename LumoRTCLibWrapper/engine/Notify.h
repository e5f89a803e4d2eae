#pragma once

#include "LumoRTCLibWrapper/engine/LMRTCIWEngine.h"
#include "LumoRTCLibWrapper/engine/LMRTCIWEngineDelegate.h"
#include "LumoRTCLibWrapper/util/LMIWLog.h"

// The bodies of LMRTCIWEngine's helpers for calling the host; included by the engine's sources only.

template <class Callback>
lumo::HostCallback<Callback> LMRTCIWEngineBase::listener(Callback LMRTCIWEngineDelegate::*field) const {
  auto pass = callbackGate_.enter();
  const auto delegate = pass ? engineDelegate() : nullptr;
  if (!delegate || !((*delegate).*field)) return {};
  return {std::move(pass), std::shared_ptr<const Callback>(delegate, &((*delegate).*field))};
}

template <class... Parameters, class... Arguments>
bool LMRTCIWEngineBase::notify(std::function<void(Parameters...)> LMRTCIWEngineDelegate::*field,
                               const Arguments&... arguments) const {
  const auto callback = listener(field);
  if (!callback) return false;
  (*callback)(arguments...);
  return true;
}

template <class Callback, class... Arguments>
void LMRTCIWEngine::notifyOf(const std::weak_ptr<LMRTCIWEngine>& weak, Callback LMRTCIWEngineDelegate::*field,
                             const Arguments&... arguments) {
  if (const auto self = weak.lock()) self->notify(field, arguments...);
}

template <class Callback, class... Arguments>
void LMRTCIWEngineBase::announceAs(Callback LMRTCIWEngineDelegate::*field, const char* method,
                                   const char* keys, lumo::FormatValues values,
                                   const Arguments&... arguments) const {
  const auto callback = listener(field);
  if (!callback) return;
  LMIMIWLog::listener(method, keys, values);
  (*callback)(arguments...);
}

template <class Callback, class... Arguments>
void LMRTCIWEngineBase::announce(Callback LMRTCIWEngineDelegate::*field, const char* method, const char* keys,
                                 const Arguments&... arguments) const {
  announceAs(field, method, keys, {arguments...}, arguments...);
}
