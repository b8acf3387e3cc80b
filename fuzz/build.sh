#!/bin/bash -eu
# Builds the fuzz targets as OSS-Fuzz asks: $SRC/audlmd holds this tree; $CXX, $CXXFLAGS and $LIB_FUZZING_ENGINE say how to
# build; targets, seeds and dictionaries go to $OUT, and with them the shared libraries that the machine of the fuzzer may
# not have.
# What scripts/setup installs in the groups build and check must be there. The libraries come from Debian, and so does their
# C++ library: libc++ would be a second one.
cd "$SRC/audlmd"
CXXFLAGS=${CXXFLAGS/-stdlib=libc++/}
# So that libraries of libraries are found beside them.
export LDFLAGS=-Wl,--disable-new-dtags
build=${WORK:-/tmp}/audlmd
cmake -S . -B "$build" -G Ninja -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="$CXXFLAGS" -DCMAKE_BUILD_TYPE=None \
    -DAUDLMD_SANITIZED=ON -DAUDLMD_FUZZ=ON -DAUDLMD_FUZZING_ENGINE="$LIB_FUZZING_ENGINE" \
    -DCMAKE_BUILD_WITH_INSTALL_RPATH=ON -DCMAKE_INSTALL_RPATH='$ORIGIN/lib'
cmake --build "$build" --target audlmd_fuzz

mkdir -p "$OUT/lib"
for target in "$build"/fuzz/audlmd_fuzz_*; do
    name=${target##*audlmd_fuzz_}
    cp "$target" "$OUT/"
    # All but what every machine has.
    LD_LIBRARY_PATH=$build ldd "$target" | awk '$2 == "=>" && $1 !~ /^lib(c|m|gcc_s|pthread|dl|rt)\.so/ { print $3 }' |
        xargs -r cp -n -t "$OUT/lib"
    if [ -d "fuzz/seeds/$name" ]; then
        (cd "fuzz/seeds/$name" && zip -q "$OUT/audlmd_fuzz_${name}_seed_corpus.zip" ./*)
    fi
    if [ -f "fuzz/$name.dict" ]; then
        cp "fuzz/$name.dict" "$OUT/audlmd_fuzz_$name.dict"
    fi
done
