// The operation of a dynamic level that every chain with one begins with. See
// standalone/inlined/HostOperations.hpp for who includes this file, and how.

#include "host/DynamicLevel.hpp"

namespace Aud::DynamicLevelControl {

AUDLMD_HOST_OPERATION
DynamicLevelApplyingIteratorBase::DynamicLevelApplyingIteratorBase(DynamicLevelApplyingIteratorState& state)
    : state_(state) {}

} // namespace Aud::DynamicLevelControl
