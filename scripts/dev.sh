#!/usr/bin/env bash
# Developer entry point. Installs what is missing (Debian bookworm, apt),
# builds with the CMake presets and runs one job:
#
#   scripts/dev.sh examples   parse every bundled sample in examples/samples/ with qvx-parse
#   scripts/dev.sh test       run all tests, in the release and the sanitizer build, then a
#                             fuzz smoke run when clang-14 is installed
#   scripts/dev.sh bench      run the benchmarks and the cost report (release build)
#   scripts/dev.sh fuzz [s] [format]
#                             run a libFuzzer target for s seconds (default 60): the one of
#                             `format`, or the one over every format
#   scripts/dev.sh fuzz-smoke [s]
#                             run each per-format libFuzzer target for s seconds (default 5)
#   scripts/dev.sh lint       clang-format check and clang-tidy over src/, tools/ and the Python module
#   scripts/dev.sh deps       only install the build dependencies
#
# The JavaScript package and the Objective-C classes are built when their
# toolchains are installed (emscripten; gobjc++ with libgnustep-base-dev), as
# .ci/run does; without them they are skipped.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(cmake ninja-build g++ pkgconf nlohmann-json3-dev libgtest-dev libgmock-dev
          libbenchmark-dev libmimalloc-dev python3-dev pybind11-dev)

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
            format=$(basename "$sample"); format=${format%%.*}
            echo "== $format ($sample)"
            build/default/tools/qvx-parse --format "$format" --input "$sample" || status=1
            echo
        done
        exit $status
        ;;
    test)
        deps
        # Each test is a process of its own: run as many at once as there are cores.
        export CTEST_PARALLEL_LEVEL="${CTEST_PARALLEL_LEVEL:-$(nproc)}"
        cmake --workflow --preset default
        cmake --workflow --preset debug-asan
        if command -v clang++-14 >/dev/null; then
            "$0" fuzz-smoke
        else
            echo "clang++-14 not installed: fuzz smoke run skipped" >&2
        fi
        ;;
    bench)
        deps
        build_default >/dev/null
        build/default/bench/qvx_bench
        build/default/bench/qvx_bench_cost
        ;;
    fuzz)
        deps clang-14 libclang-rt-14-dev
        cmake --preset fuzz >/dev/null
        cmake --build --preset fuzz
        target=qvx_fuzz_${3:-parse}
        mkdir -p "build/fuzz/corpus/$target"
        "build/fuzz/fuzz/$target" -max_total_time="${2:-60}" "build/fuzz/corpus/$target" fuzz/seeds
        ;;
    fuzz-smoke)
        deps clang-14 libclang-rt-14-dev
        cmake --preset fuzz >/dev/null
        cmake --build --preset fuzz
        for target in build/fuzz/fuzz/qvx_fuzz_*; do
            [ "$(basename "$target")" = qvx_fuzz_parse ] && continue
            echo "== $(basename "$target")"
            corpus=$(mktemp -d) log=$(mktemp)
            if ! "$target" -max_total_time="${2:-5}" "$corpus" fuzz/seeds >"$log" 2>&1; then
                cat "$log"
                exit 1
            fi
            grep -E '^Done|^#[0-9]+ *DONE' "$log" || tail -n 1 "$log"
            rm -rf "$corpus" "$log"
        done
        ;;
    lint)
        deps clang-format clang-tidy
        cmake --preset default >/dev/null
        files=$(git ls-files '*.cpp' '*.h' '*.mm')
        clang-format --dry-run -Werror $files
        git ls-files 'src/*.cpp' 'tools/*.cpp' | xargs -P"$(nproc)" -n4 clang-tidy -p build/default --quiet
        # The Python module, when built, carries pybind11's LTO switches, which clang does not take.
        if grep -q 'bindings/python/module.cpp' build/default/compile_commands.json; then
            clang-tidy -p build/default --quiet --extra-arg=-Wno-ignored-optimization-argument \
                bindings/python/module.cpp
        fi
        ;;
    *)
        echo "usage: scripts/dev.sh examples|test|bench|fuzz [seconds] [format]|fuzz-smoke [seconds]|lint|deps" >&2
        exit 2
        ;;
esac
