# Debian packages that the scripts need, and how they get them. Sourced by ./run, ./test and ./bench/run.
#
#   need_packages GROUP...   installs what is missing of the groups: such as build, test or arm64, named below
#
# With QL_INSTALL=no it only says what is missing and stops.

packages_build="g++ cmake ninja-build pkg-config libcjson-dev libusb-1.0-0-dev libcli11-dev libpng-dev libsixel-dev"
packages_test="libgtest-dev umockdev libumockdev-dev python3 locales zsh fish shellcheck tmux python3-jsonschema"
packages_vm="qemu-system-x86 qemu-system-arm binutils cpio"
packages_package="doxygen debhelper dpkg-dev lintian abigail-tools scdoc fakeroot mmdebstrap"
packages_screenshots="xvfb xterm imagemagick fonts-dejavu-core fonts-noto-cjk"
packages_arm64="g++-aarch64-linux-gnu qemu-user-static libc6:arm64 libstdc++6:arm64 libcjson-dev:arm64
  libusb-1.0-0-dev:arm64 libpng-dev:arm64 libsixel-dev:arm64 libgtest-dev:arm64"
packages_clang="clang libclang-rt-14-dev"
packages_fuzz="clang libclang-rt-14-dev"
packages_sanitizers="valgrind cppcheck clang-tidy clang-tools"
packages_sanitizers_arm64="libasan8:arm64 libubsan1:arm64"
packages_coverage="gcovr"
packages_bench="libbenchmark-dev libicu-dev libssl-dev libglib2.0-dev libmodpbase64-dev rapidjson-dev nlohmann-json3-dev
  libspdlog-dev binutils"

need_packages() {
    local group list missing=
    for group in "$@"; do
        list=packages_$group
        for package in ${!list}; do
            dpkg-query -W -f '${Status}\n' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=" $package"
        done
    done
    [ -n "$missing" ] || return 0
    if [ "${QL_INSTALL:-yes}" = no ]; then
        echo "Missing Debian packages:$missing" >&2
        echo "Install them with: sudo apt-get install --no-install-recommends$missing" >&2
        exit 1
    fi
    local as_root=
    if [ "$(id -u)" != 0 ]; then
        as_root=sudo
        command -v sudo >/dev/null || {
            echo "Missing Debian packages:$missing" >&2
            echo "There is no sudo here: install them as root, then call this again with --no-install." >&2
            exit 1
        }
    fi
    echo "Installing Debian packages:$missing" >&2
    local log
    log=$(mktemp)
    case $missing in
    *:arm64*)
        dpkg --print-foreign-architectures | grep -qx arm64 || $as_root dpkg --add-architecture arm64 ;;
    esac
    if ! { $as_root apt-get update -qq &&
           $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing; } \
         >"$log" 2>&1 </dev/null; then
        tail -n 20 "$log" >&2
        echo "The packages could not be installed; the whole output is in $log" >&2
        exit 1
    fi
    rm -f "$log"
}

# quietly NAME COMMAND...: shows the command's output only when it fails.
quietly() {
    local name=$1 log status=0
    shift
    echo "$name" >&2
    log=$(mktemp)
    "$@" >"$log" 2>&1 </dev/null || status=$?
    if [ $status != 0 ]; then
        tail -n 40 "$log" >&2
        echo "$name failed with status $status; the whole output is in $log" >&2
        exit $status
    fi
    rm -f "$log"
}
