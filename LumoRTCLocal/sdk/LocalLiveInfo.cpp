#include "LumoRTCLocal/sdk/LocalLiveInfo.h"

#include <utility>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCMixConfig.h"
#include "LumoRTCLocal/server/LocalCodes.h"

namespace lumo {

LocalLiveInfo::LocalLiveInfo(std::shared_ptr<const LocalContext> context, MediaServer::Member member)
    : context_(std::move(context)), member_(std::move(member)) {}

void LocalLiveInfo::setMixConfig(const LMRTCMixConfig& config, Completion completion) {
  context_->operations->run("setMixConfig", [weak = std::weak_ptr(context_), member = member_, config,
                                             completion = std::move(completion)](std::int64_t refusal) {
    std::int64_t code = refusal;
    if (const auto context = contextFor(weak, code)) code = context->server->setMixConfig(member, config);
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
  context_->operations->run("enableInnerCDN", [weak = std::weak_ptr(context_), member = member_, enabled,
                                               completion = std::move(completion)](std::int64_t refusal) {
    std::int64_t code = refusal;
    const auto context = contextFor(weak, code);
    if (context) code = context->server->enableCdn(member, enabled);
    if (!completion) return;
    if (code != LocalCodeSuccess) return completion(false, code);
    // After the event that shows the stream in the room, so that the host can subscribe to it at once.
    context->sdk->post([completion] { completion(true, LocalCodeSuccess); });
  });
}

void LocalLiveInfo::changePushes(std::string_view operation, Push push, const std::string& url,
                                 Completion completion) {
  context_->operations->run(operation, [weak = std::weak_ptr(context_), member = member_, push, url,
                                        completion = std::move(completion)](std::int64_t refusal) {
    std::int64_t code = refusal;
    if (const auto context = contextFor(weak, code)) {
      const auto onSdkThread = [weakSdk = std::weak_ptr(context->sdk), completion](std::int64_t result) {
        const auto sdk = completion ? weakSdk.lock() : nullptr;
        if (sdk) sdk->post([completion, result] { completion(result); });
      };
      code = ((*context->server).*push)(member, url, onSdkThread);
    }
    if (code != LocalCodeSuccess && completion) completion(code);
  });
}

}  // namespace lumo
