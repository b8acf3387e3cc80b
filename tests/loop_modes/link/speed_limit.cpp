// A host's program that knows the variable by its name alone.
#include <cstdio>

extern double cfgAudioPlaybackSpeedLimit;

int main() {
    std::printf("%g\n", cfgAudioPlaybackSpeedLimit);
}
