# What the project needs from Debian 12, for run and test. Sourced, not run.
# Each function installs only what is missing, with sudo where the user isn't root.

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

is_installed() {
    dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'install ok installed'
}

# install_packages NAME...: those of the named packages that are missing
install_packages() {
    local missing=() name
    for name in "$@"; do
        is_installed "$name" || missing+=("$name")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "installing: ${missing[*]}"
    # An index that is in the middle of its own update makes this fail; the packages are often there all the same.
    as_root apt-get update -qq || true
    DEBIAN_FRONTEND=noninteractive as_root apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

install_build_packages() {
    install_packages g++ cmake ninja-build libcli11-dev nlohmann-json3-dev libmspack-dev
}

install_test_packages() {
    install_packages libgtest-dev libgmock-dev googletest libbenchmark-dev clang libclang-rt-14-dev clang-format-14 gcab \
        mold python3
}

install_windows_packages() {
    install_packages g++-mingw-w64-x86-64-win32 g++-mingw-w64-i686-win32 wine wine64
}

# 32-bit Wine. Where the i386 index is out of step with the amd64 one the plain way fails; then the newest common state
# of bookworm is taken. Returns non-zero when neither works: the x86 half of the tests can't run then.
install_wine32() {
    is_installed wine32:i386 && return 0
    echo "installing: wine32:i386"
    as_root dpkg --add-architecture i386
    as_root apt-get update -qq || true
    DEBIAN_FRONTEND=noninteractive as_root apt-get install -y -qq --no-install-recommends wine32:i386 >/dev/null 2>&1 && return 0
    DEBIAN_FRONTEND=noninteractive as_root apt-get -y -qq -t bookworm --allow-downgrades --no-install-recommends --no-remove \
        install wine32:i386 libgstreamer-plugins-base1.0-0:amd64=1.22.0-3+deb12u6 >/dev/null 2>&1
}
