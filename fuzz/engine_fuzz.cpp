// The engine between any device and any host, compared with the model: the sequences of tests/model, with the
// fuzzer's choices.
//
// Input: the choices in turn, each a byte, or two for those among more than 256.

#include "input.h"
#include "require.h"
#include "sequence.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  rig::Sequence sequence(
      [&input](unsigned count) { return (count > 256 ? input.number16() : input.byte()) % count; });
  std::string found;
  for (int tick = 0; tick < rig::kTicks && found.empty() && !input.isAtEnd(); ++tick)
    found = sequence.tick();
  fuzz::requireSame(found.empty() ? sequence.end() : found, "", "the model explains every call");
  return 0;
}
