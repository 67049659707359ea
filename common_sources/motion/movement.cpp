#include "movement.h"

namespace motion {

Movement movement;
AcGsView* viewP = nullptr;
std::int32_t cvportNumber = 0;

} // namespace motion
