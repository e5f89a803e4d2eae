#include "LumoRTCLocal/sdk/LocalLiveInfo.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCMixConfig.h"
#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {

LocalLiveInfo::LocalLiveInfo(std::shared_ptr<const LocalContext> context, MediaServer::Member member)
    : context_(std::move(context)), member_(std::move(member)) {}

void LocalLiveInfo::setMixConfig(const LMRTCMixConfig& config, Completion completion) {
  context_->operations->run("setMixConfig", [server = context_->server, member = member_, config,
                                             completion = std::move(completion)](std::int64_t refusal) {
    const std::int64_t code = refusal != 0 ? refusal : server->setMixConfig(member, config);
    if (completion) completion(code);
  });
}

void LocalLiveInfo::addPublishStreamUrl(const std::string& url, Completion completion) {
  changePushes("addPublishStreamUrl", &MediaServer::addPush, url, std::move(completion));
}

void LocalLiveInfo::removePublishStreamUrl(const std::string& url, Completion completion) {
  changePushes("removePublishStreamUrl", &MediaServer::removePush, url, std::move(completion));
}

void LocalLiveInfo::enableInnerCDN(bool enabled, SwitchCompletion completion) {
  context_->operations->run(
      "enableInnerCDN", [server = context_->server, sdk = context_->sdk, member = member_, enabled,
                         completion = std::move(completion)](std::int64_t refusal) {
        const std::int64_t code = refusal != 0 ? refusal : server->enableCdn(member, enabled);
        // After the event that shows the stream in the room, so that the host can subscribe to it at once.
        if (completion) sdk->post([completion, code] { completion(code == LocalCodeSuccess, code); });
      });
}

void LocalLiveInfo::changePushes(std::string_view operation, Push push, const std::string& url,
                                 Completion completion) {
  context_->operations->run(operation, [server = context_->server, sdk = context_->sdk, member = member_,
                                        push, url, completion = std::move(completion)](std::int64_t refusal) {
    const auto onSdkThread = [sdk, completion](std::int64_t code) {
      if (completion) sdk->post([completion, code] { completion(code); });
    };
    const std::int64_t code = refusal != 0 ? refusal : ((*server).*push)(member, url, onSdkThread);
    if (code != LocalCodeSuccess && completion) completion(code);
  });
}

}  // namespace lumo
