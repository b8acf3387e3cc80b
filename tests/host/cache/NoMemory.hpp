#pragma once

namespace audlmd::test {

/// Lets the next `new` of this thread throw std::bad_alloc.
void failNextAllocation();

} // namespace audlmd::test
