#!/usr/bin/env bash
# ./run.sh demo | test | asan | bench
# Installs what a fresh machine lacks (apt-get, as root), builds, and runs the chosen task.
set -euo pipefail
cd "$(dirname "$0")"

PACKAGES=(cmake g++ make pkg-config ccache libicu-dev libpcre2-dev libgtest-dev libgmock-dev libexpat1-dev
          libbenchmark-dev clang-format tzdata rapidjson-dev
          unicode-data bzip2)  # NormalizationTest.txt(.bz2) for the test of normalize-unicode

install_missing() {
  local missing=()
  for p in "${PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
  done
  if ((${#missing[@]})); then
    echo "Installing: ${missing[*]}"
    local sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo apt-get update -qq || true
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}" >/dev/null
  fi
}

jobs=2
build() { # build <dir> <cmake args...>
  local dir=$1; shift
  cmake -S . -B "$dir" "$@" >/dev/null
  cmake --build "$dir" -j"$jobs"
}

task=${1:-}
case "$task" in
  demo)
    install_missing
    build build -DCMAKE_BUILD_TYPE=Release
    echo "== lxtool events tests/data/sample.xml"
    ./build/lxtool events tests/data/sample.xml
    echo "== examples/demo.cpp"
    ./build/example_demo
    echo "== examples/dom_demo.cpp on tests/data/catalog.xml"
    ./build/example_dom_demo tests/data/catalog.xml
    echo "== examples/json_demo.cpp on tests/data/orders.json"
    ./build/example_json_demo tests/data/orders.json
    echo "== examples/describe_demo.cpp"
    ./build/example_describe_demo
    echo "== examples/serialize_demo.cpp"
    ./build/example_serialize_demo
    ;;
  test)
    install_missing
    # The project's own test builds count live objects to prove that nothing leaks.
    build build -DCMAKE_BUILD_TYPE=Release -DLORVANE_COUNT_INSTANCES=ON
    ctest --test-dir build --output-on-failure -j"$jobs"
    ;;
  asan)
    install_missing
    build build-asan -DCMAKE_BUILD_TYPE=Debug -DLORVANE_SANITIZE=ON -DLORVANE_COUNT_INSTANCES=ON
    ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
      ctest --test-dir build-asan --output-on-failure -j"$jobs"
    ;;
  bench)
    PACKAGES+=(libxml2-dev libpugixml-dev libtinyxml2-dev  # rivals in bench/ programs
               rapidjson-dev nlohmann-json3-dev libsimdjson-dev
               libcereal-dev libboost-json1.81-dev libboost1.81-dev  # bench/serialization
               shared-mime-info iso-codes libgirepository1.0-dev)  # real XML files for bench/dom_load_save
    install_missing
    build build-bench -DCMAKE_BUILD_TYPE=Release -DLORVANE_BENCH=ON -DLORVANE_TESTS=OFF
    # Real JSON for bench_json_load_save, unpacked beside the build and never committed.
    [ -f build-bench/jsonexamples/twitter.json ] ||
      (cd build-bench && npm pack simdjson@0.9.2 >/dev/null &&
        tar xzf simdjson-0.9.2.tgz package/jsonexamples && rm -rf jsonexamples &&
        mv package/jsonexamples . && rm -rf package simdjson-0.9.2.tgz) ||
      echo "note: the JSON examples could not be fetched; bench_json_load_save skips them"
    for b in build-bench/bench/bench_*; do
      [ -x "$b" ] && "$b" "${@:2}"
    done
    ;;
  *)
    echo "usage: ./run.sh demo | test | asan | bench" >&2
    exit 2
    ;;
esac
