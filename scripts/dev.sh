#!/usr/bin/env bash
# Developer entry point. Installs what is missing (Debian bookworm, apt),
# builds with the CMake presets and runs one job:
#
#   scripts/dev.sh examples   parse every bundled sample in examples/samples/ with qvx-parse
#   scripts/dev.sh test       run all tests, in the release and the sanitizer build
#   scripts/dev.sh bench      run the benchmarks (release build)
#   scripts/dev.sh fuzz [s]   run the libFuzzer target for s seconds (default 60)
#   scripts/dev.sh lint       clang-format check and clang-tidy over src/ and tools/
#   scripts/dev.sh deps       only install the build dependencies
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(cmake ninja-build g++ pkgconf nlohmann-json3-dev libgtest-dev libgmock-dev
          libbenchmark-dev)

deps() {
    local missing=() pkg
    for pkg in "${packages[@]}" "$@"; do
        dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed" ||
            missing+=("$pkg")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local sudo=()
    [ "$(id -u)" -eq 0 ] || sudo=(sudo)
    echo "installing: ${missing[*]}" >&2
    "${sudo[@]}" apt-get update
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y --no-install-recommends \
        "${missing[@]}"
}

build_default() {
    cmake --preset default >/dev/null
    cmake --build --preset default
}

case "${1:-}" in
    deps)
        deps
        ;;
    examples)
        deps
        build_default >/dev/null
        status=0
        for sample in examples/samples/*; do
            format=$(basename "$sample"); format=${format%.*}
            echo "== $format ($sample)"
            build/default/tools/qvx-parse --format "$format" --input "$sample" || status=1
            echo
        done
        exit $status
        ;;
    test)
        deps
        cmake --workflow --preset default
        cmake --workflow --preset debug-asan
        ;;
    bench)
        deps
        build_default >/dev/null
        build/default/bench/qvx_bench
        ;;
    fuzz)
        deps clang-14 libclang-rt-14-dev
        cmake --preset fuzz >/dev/null
        cmake --build --preset fuzz
        mkdir -p build/fuzz/corpus
        build/fuzz/fuzz/qvx_fuzz_parse -max_total_time="${2:-60}" build/fuzz/corpus fuzz/seeds
        ;;
    lint)
        deps clang-format clang-tidy
        cmake --preset default >/dev/null
        files=$(git ls-files '*.cpp' '*.h')
        clang-format --dry-run -Werror $files
        git ls-files 'src/*.cpp' 'tools/*.cpp' | xargs -P"$(nproc)" -n4 clang-tidy -p build/default --quiet
        ;;
    *)
        echo "usage: scripts/dev.sh examples|test|bench|fuzz [seconds]|lint|deps" >&2
        exit 2
        ;;
esac
