# shellcheck shell=bash
# Sourced by the other scripts: Debian packages, installed only when something is missing.

qb_is_installed() {
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Runs a command as root, with sudo when we are not; sudo may ask for the password on the terminal.
qb_as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        return 127
    fi
}

# Installs those of the given packages that are missing. Names them and fails when that is not possible.
qb_need_packages() {
    local package missing=()
    for package in "$@"; do
        qb_is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0

    echo "Installing: ${missing[*]}"
    qb_as_root apt-get update -qq || echo "The package lists could not be renewed; trying with the old ones." >&2
    qb_as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null || true
    for package in "${missing[@]}"; do
        if ! qb_is_installed "$package"; then
            echo "Missing Debian package: $package (install it with: apt-get install ${missing[*]})" >&2
            return 1
        fi
    done
}

# Gets what 32-bit programs need, and sets `launcher` to the emulator where the kernel does not run them itself.
qb_prepare_32_bit() {
    launcher=
    qb_need_packages g++-multilib || return 1
    /lib/ld-linux.so.2 --version >/dev/null 2>&1 && return 0
    echo "This kernel runs no 32-bit programs; emulating them."
    # shellcheck disable=SC2034
    launcher='qemu-i386;-cpu;max'
    qb_need_packages qemu-user
}

# Makes a German locale of our own, which needs no rights on the machine, and has programs look for locales there.
qb_prepare_locale() {
    export LOCPATH=$PWD/build/locales
    [ -d "$LOCPATH/de_DE.utf8" ] && return 0
    mkdir -p "$LOCPATH"
    localedef --no-archive -i de_DE -f UTF-8 "$LOCPATH/de_DE.utf8"
}

# What every build needs.
# shellcheck disable=SC2034
QB_BUILD_PACKAGES=(g++ cmake ninja-build)
# What the tests need beside that.
# shellcheck disable=SC2034
QB_TEST_PACKAGES=(googletest pkg-config binutils curl tzdata locales)
# Programs that tests compare the library with or look at it through: a test that does not find its own says so and is
# left out.
# shellcheck disable=SC2034
QB_TEST_TOOLS=(strace tidy tmux openssl php-cli libxml2-utils)

# Configures and builds a preset; `qb_build PRESET [cmake options]`.
qb_build() {
    local preset=$1
    shift
    cmake --preset "$preset" "$@" >/dev/null && cmake --build --preset "$preset"
}
