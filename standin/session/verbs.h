#ifndef VERBS_H
#define VERBS_H

#include "session.h"
#include "words.h"

namespace session {

/// Reads verb and arguments for the player in action.mWho and fills the rest of the action. Throws LineError.
void readVerb(Words& words, Action& action);

} // namespace session

#endif
