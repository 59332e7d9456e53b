#pragma once

#include <map>
#include <string>

namespace tessly::test {

/// Whether a test of faults is to go through all of them, which takes minutes, or through a part.
[[nodiscard]] bool triesAllFaults();

/// The seed of a test that goes by chance: TESSLY_SEED of the environment, to repeat a run, or one
/// that nobody knows before. Prints it.
[[nodiscard]] unsigned randomSeed();

/// Tells script/faults what became of the faults of one kind: how often each outcome was seen.
void reportFaults(const std::string& operation, const std::map<std::string, int>& outcomes);

} // namespace tessly::test
