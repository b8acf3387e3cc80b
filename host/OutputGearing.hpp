#pragma once

namespace Orv {

/// How fast the output consumes the material. The renderer only passes it on to the sample cache, whose
/// loading looks further ahead the faster the material is consumed.
struct OutputGearing {
    /// Source samples per output sample; its magnitude counts.
    double sourceSamplesPerOutputSample = 1.0;
};

} // namespace Orv
