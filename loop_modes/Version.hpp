#pragma once

/// The version of this library: four numbers, separated by dots.
const char* audLMDDllVersionStr();
