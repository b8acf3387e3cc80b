#pragma once

namespace audlmd {

/// The width of the vectors in the loops over blocks, in bits: 256 (AVX2), 128 (SSE4.2 and AES), or 0, which
/// is one sample at a time. At the start the widest that the processor has, unless the setting VectorBits
/// asks for less. Every width gives the same bytes. \snippet signal.cpp vectors
int vectorBits();

/// Uses the widest vectors of at most so many bits that the processor has. Use this to look for a fault of
/// one width. Loops that run at the time may go on with the width that they began with.
/// \snippet signal.cpp vectors
void useVectors(int mostBits);

} // namespace audlmd
