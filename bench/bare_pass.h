#ifndef BARE_PASS_H
#define BARE_PASS_H

class OvAutoCad;

namespace bench {

/// A pass over a motion sample, written for one case alone: model space, parallel projection,
/// mode "objscreen", no selection, the pointer on the drawing. Calls of the host and arithmetic are those of
/// the engine's pass, in its order.
void barePass(const OvAutoCad& plugin);

} // namespace bench

#endif
