# What the preset windows needs besides the distribution's packages. Sourced by ./test; run by itself,
#   bash cmake/sh/windows.sh
# it installs the packages and builds the libraries for the target, after which `cmake --preset windows` works.

packages_windows="g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 mingw-w64-x86-64-dev wine wine64 googletest
    cmake ninja-build xz-utils"

# source_list DIRECTORY: the distribution's own list of package sources, asking for source packages.
source_list() {
    local file
    mkdir -p "$1"
    for file in /etc/apt/sources.list.d/debian*.sources /etc/apt/sources.list.d/ubuntu*.sources; do
        [ -e "$file" ] && sed 's/^Types:.*/Types: deb-src/' "$file" >"$1/$(basename "$file")"
    done
    [ -e /etc/apt/sources.list ] && sed -n 's/^deb /deb-src /p' /etc/apt/sources.list >"$1/own.list"
    return 0
}

# fetch_sources DIRECTORY NAME...: downloads source packages, which the package manager verifies, and unpacks nothing.
fetch_sources() {
    local target=$1
    shift
    local options=(-qq -o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$target/sources"
        -o "Dir::State::Lists=$target/lists" -o APT::Sandbox::User=)
    mkdir -p "$target/lists/partial"
    source_list "$target/sources"
    (cd "$target" && apt-get "${options[@]}" update && apt-get "${options[@]}" source --download-only "$@" >/dev/null)
}

# cmake_for_windows SOURCE BUILD PREFIX [options]: builds and installs a library for the target.
cmake_for_windows() {
    local source=$1 build=$2 prefix=$3
    shift 3
    cmake -S "$source" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF \
        -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/toolchains/mingw-w64.cmake" -DKXRA_WINDOWS_PREFIX="$prefix" \
        -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR=lib "$@" >/dev/null &&
        cmake --build "$build" -- --quiet &&
        cmake --install "$build" >/dev/null
}

# boost_for_windows SOURCE PREFIX: the headers of all of Boost, and the libraries that the foundation links.
boost_for_windows() {
    local source=$1 prefix=$2 name file objects
    mkdir -p "$prefix/include" "$prefix/lib"
    for file in "$source"/libs/*/include "$source"/libs/numeric/*/include; do
        cp -r "$file/." "$prefix/include/" || return 1
    done
    for name in filesystem system; do
        objects=$source/objects/$name
        mkdir -p "$objects"
        for file in "$source/libs/$name"/src/*.cpp; do
            echo "$file $objects/$(basename "$file" .cpp).o"
        done | xargs -P "$(nproc)" -n 2 sh -c 'x86_64-w64-mingw32-g++-posix -std=c++20 -O2 -w -D_WIN32_WINNT=0x0A00 \
            -DBOOST_ALL_NO_LIB -DBOOST_FILESYSTEM_SOURCE -DBOOST_FILESYSTEM_STATIC_LINK=1 -DBOOST_SYSTEM_STATIC_LINK=1 \
            -I"$0/include" -c "$1" -o "$2"' "$prefix" || return 1
        x86_64-w64-mingw32-ar rcs "$prefix/lib/libboost_$name.a" "$objects"/*.o || return 1
    done
}

# unpack ARCHIVE DIRECTORY [PATTERN...]: without the folder that the archive has around everything.
unpack() {
    local archive=$1 target=$2
    shift 2
    mkdir -p "$target" && tar xf "$archive" -C "$target" --strip-components=1 --wildcards "$@"
}

# build_windows_libraries PREFIX WORK: each step only after the one before it.
build_windows_libraries() {
    local prefix=$1 work=$2
    rm -rf "$prefix" && mkdir -p "$prefix" &&
        fetch_sources "$work" boost1.74 pugixml &&
        unpack "$work"/boost1.74_*.orig.tar.xz "$work/boost" '*/libs/*/include' '*/libs/filesystem/src' '*/libs/system/src' &&
        unpack "$work"/pugixml_*.orig.tar.gz "$work/pugixml" &&
        boost_for_windows "$work/boost" "$prefix" &&
        cmake_for_windows "$work/pugixml" "$work/pugixml-build" "$prefix" &&
        cmake_for_windows /usr/src/googletest "$work/googletest-build" "$prefix"
}

# ensure_windows_libraries PREFIX: builds Boost.Filesystem, pugixml and GoogleTest for the target, from the
# distribution's sources, unless they are there.
ensure_windows_libraries() {
    local prefix=$1 work
    [ -e "$prefix/complete" ] && return 0
    echo "== building Boost.Filesystem, pugixml and GoogleTest for Windows in ${prefix#"$PWD/"}"
    work=$(mktemp -d)
    build_windows_libraries "$prefix" "$work" && touch "$prefix/complete"
    rm -rf "$work"
    [ -e "$prefix/complete" ] || { echo "$0: the libraries for Windows could not be built" >&2; return 1; }
}

if [ "${BASH_SOURCE[0]}" = "$0" ]; then
    set -euo pipefail
    cd "$(dirname "$0")/../.."
    . cmake/sh/packages.sh
    # shellcheck disable=SC2086 # the list is words
    ensure_packages $packages_windows
    ensure_windows_libraries "${1:-$PWD/build/windows-libraries}"
fi
