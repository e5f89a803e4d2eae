#pragma once

#include <cstdint>
#include <vector>

/// What the network probe measured in one direction.
struct LMRTCProbeForm {
  struct Stat {
    std::int64_t rtt = 0;  ///< round trip, milliseconds
    float packetLoss = 0;  ///< fraction of the packets that were lost, 0 to 1
  };

  std::int64_t direction = 0;     ///< 1 up, 2 down
  std::int64_t qualityLevel = 0;  ///< 1 best to 5 worst; 0 unknown
  Stat stat;
};

/// Hears of the network probe, on the SDK's thread.
class LMRTCProbeTestDelegate {
 public:
  virtual ~LMRTCProbeTestDelegate() = default;

  virtual void didReportProbeForms(const std::vector<LMRTCProbeForm>& forms) = 0;
  virtual void didRTCProbeComplete() = 0;
  /// The probe ended early. (The spelling is the SDK's.)
  virtual void didRTCProbeInterrput(std::int64_t code) = 0;
};
