#ifndef MODEL_CALL_H
#define MODEL_CALL_H

#include "call_log.h"
#include "replay.h"

namespace program {

/// Returns a call of the trace as the model reads it.
inline model::Call modelCall(const call_log::Record& record) {
  return {record.name, record.in, record.text, record.out, record.outText, record.threw};
}

} // namespace program

#endif
