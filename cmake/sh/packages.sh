# What the commands of this project need from the distribution. Sourced by ./run and ./test.

packages_run="g++ cmake ninja-build pkg-config libboost-dev libboost-filesystem-dev libboost-system-dev
    libpugixml-dev libsnmp-dev libsystemd-dev libcli11-dev snmp snmptrapd"
packages_test="$packages_run libgtest-dev libgmock-dev libbenchmark-dev libprotobuf-dev protobuf-compiler snmpd
    smitools python3 binutils clang-format git xz-utils abigail-tools systemd"

# ensure_packages NAME...: installs what is missing, and says what it installs.
ensure_packages() {
    local missing=() name
    for name in "$@"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null)" = installed ] || missing+=("$name")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "== installing: ${missing[*]}"
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "$0: these packages are missing, and only root can install them: ${missing[*]}" >&2
            return 1
        }
        as_root=(sudo)
    fi
    "${as_root[@]}" apt-get update -qq || echo "$0: the package lists could not be renewed; trying with the old ones" >&2
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# ensure_smi_modules DIRECTORY: the base SMI modules (SNMPv2-SMI and its family), which the distribution ships in
# the package erlang-snmp alone. They are unpacked to DIRECTORY, not installed.
ensure_smi_modules() {
    local target=$1 work file
    [ -e "$target/SNMPv2-SMI.mib" ] && return 0
    echo "== unpacking the base SMI modules to ${target#"$PWD/"}"
    mkdir -p "$target"
    work=$(mktemp -d)
    if ! (cd "$work" && apt-get download -qq erlang-snmp >/dev/null 2>&1); then
        (cd "$work" && { apt-get update -qq || sudo apt-get update -qq; } && apt-get download -qq erlang-snmp >/dev/null)
    fi || { echo "$0: the package erlang-snmp could not be had" >&2; rm -rf "$work"; return 1; }
    dpkg -x "$work"/erlang-snmp*.deb "$work/tree"
    for file in "$work"/tree/usr/lib/erlang/lib/snmp-*/mibs/*.mib; do
        case $(basename "$file") in
        OTP-*) ;; # modules of another product
        *) cp "$file" "$target/" ;;
        esac
    done
    rm -rf "$work"
}
