#pragma once

#include "host/signal/StripPlayer.hpp"
#include "loop_modes/ModeCode.hpp"
#include "tools/audlmd/files/OutputFormat.hpp"

#include <cstddef>
#include <string>

namespace audlmd::command {

// Mode codes in words, for the user. `code` is a valid code everywhere; only describeFields() takes any
// fields, and says "not valid" of a field without a meaning.

/// The code's chain as one nested type, outermost layer first, without the namespaces Aud and Aud::Render.
std::string chainType(unsigned long code);

/// The six fields of a code, one line each: bits, name, value and meaning, as in
///   bits 8-9  levelStage             2   fixed outer level
std::string describeFields(const Aud::Render::ModeFields& fields);

/// The code's place in the order of registration, from 0. The command prints places counted from 1.
std::size_t registrationPlace(unsigned long code);

/// What a player is about to do, in lines: the mode code with its fields and chain, the output type, the
/// numbers in the record of the next render call, and the length of the output. `summing`: the samples are
/// added to those in the output.
std::string explain(const StripPlayer& player, FormatId format, bool summing);

} // namespace audlmd::command
