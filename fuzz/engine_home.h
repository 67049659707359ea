#ifndef FUZZ_ENGINE_HOME_H
#define FUZZ_ENGINE_HOME_H

#include "auto_cad_proxy.h"
#include "ov_auto_cad.h"

namespace fuzz {

/// The engine, made once for the program: with the twin of the device library, without its own threads'
/// motion, on a fresh host and a desktop whose clock moves a millisecond at each look. Every call sets it
/// back to that.
OvAutoCad& freshEngine();

} // namespace fuzz

#endif
