// Thresholds that are shares of something: what they may be, and what they are until the user says otherwise.
#pragma once

namespace selvane {

inline constexpr float kDefaultMinSupport = 0.05F;
inline constexpr float kDefaultMinConfidence = 0.5F;

// What a threshold must be: above 0 and at most 1. Not-a-number is none.
inline bool IsFraction(float value) {
  return value > 0 && value <= 1;
}

}  // namespace selvane
