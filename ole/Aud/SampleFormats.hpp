#pragma once

namespace Aud {

// The numbers of the three enumerations are part of the exported names.

/// Where the significant bits sit in the container.
enum eDataAlignment {
    /// They fill the container.
    ePacked = 1,
    /// In its low-order bytes; the high-order byte carries the sign.
    eLowBytes = 3,
};

enum eDataSigned {
    /// Two's complement.
    eSigned = 1,
    /// Offset binary: 0 is the most negative level.
    eUnsigned = 2,
};

enum eDataRepresentation {
    eInteger = 1,
    /// IEEE 754 single precision.
    eFloat = 2,
};

/// A sample format: one container of one sample, little-endian. A buffer is an array of containers without
/// gaps. SampleEncoding says how each format holds a float.
/// \snippet signal.cpp other formats
template <unsigned int Bits, unsigned int Bytes, eDataAlignment, eDataSigned, eDataRepresentation>
struct Sample {
    static constexpr unsigned int bits = Bits;

    unsigned char bytes[Bytes];
};

using SampleS8 = Sample<8, 1, ePacked, eSigned, eInteger>;
using SampleU8 = Sample<8, 1, ePacked, eUnsigned, eInteger>;
using SampleS16 = Sample<16, 2, ePacked, eSigned, eInteger>;
using SampleS24 = Sample<24, 3, ePacked, eSigned, eInteger>;
using SampleS24In32 = Sample<24, 4, eLowBytes, eSigned, eInteger>;
using SampleS32 = Sample<32, 4, ePacked, eSigned, eInteger>;
using SampleF32 = Sample<32, 4, ePacked, eSigned, eFloat>;

} // namespace Aud
