#pragma once

/// The value of a setting, or `defaultValue` where it is not set. Usable from the first static initialiser
/// on.
double config_double(const char* key, double defaultValue);
