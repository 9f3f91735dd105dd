#!/usr/bin/env bash
# Installs the build below a directory of its own: the right files with the right modes, nothing in them that names this
# directory or the build's, and, when all of it has been moved, a tool that works with the installed plug-in and models,
# and packages by which programs of others are built and run.
set -euo pipefail
cmake=$1 sources=$2 build=$3 prefix=$4 lib=$5 interface=$6 version=$7
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH

fail() {
    echo "$*"
    exit 1
}

cached() {
    sed -n "s/^$1:[^=]*=//p" "$build/CMakeCache.txt"
}

# The list of the last installation belongs to whoever installs.
manifest=$build/install_manifest.txt
if [ -e "$manifest" ]; then cp "$manifest" "$work/manifest"; fi
(umask 022 && DESTDIR=$work/stage "$cmake" --install "$build" --strip > "$work/log" 2>&1)
if [ -e "$work/manifest" ]; then cp "$work/manifest" "$manifest"; else rm -f "$manifest"; fi

root=$work/stage$prefix
build_type=$(cached CMAKE_BUILD_TYPE | tr '[:upper:]' '[:lower:]')
cat > "$work/expected" <<END
644 include/oc-macsec/tqm_log.h
644 include/oc-macsec/tqm_map.h
644 include/oc-macsec/tqm_rcode.h
644 $lib/cmake/oc-macsec/oc-macsec-config-version.cmake
644 $lib/cmake/oc-macsec/oc-macsec-config.cmake
644 $lib/cmake/oc-macsec/oc-macsec-targets-$build_type.cmake
644 $lib/cmake/oc-macsec/oc-macsec-targets.cmake
644 $lib/libtqm.so.$version
644 $lib/oc-macsec/libymap_oc_macsec.so
644 $lib/pkgconfig/oc-macsec-tqm.pc
644 $lib/pkgconfig/oc-macsec.pc
777 $lib/libtqm.so
777 $lib/libtqm.so.$interface
644 share/bash-completion/completions/ocmap
644 share/doc/oc-macsec/README.md
644 share/man/man1/ocmap.1.gz
755 bin/ocmap
END
(cd "$sources/framework" && find include -name '*.h' -printf '644 include/oc-macsec/%P\n') >> "$work/expected"
(cd "$sources" && find yang -name '*.yang' -printf '644 share/yang/modules/oc-macsec/%P\n' &&
    find docs \( -name '*.md' -o -name '*.png' \) -printf '644 share/doc/oc-macsec/docs/%P\n' &&
    find examples -type f ! -name run.sh -printf '644 share/doc/oc-macsec/examples/%P\n') >> "$work/expected"
find "$root" ! -type d -printf '%m %P\n' > "$work/found"
diff <(sort "$work/expected") <(sort "$work/found") || fail "the installed files differ (< expected, > found)"
[ -z "$(find "$work/stage" -type d ! -perm 755)" ] || fail "a directory has another mode than 755"
[ "$(find "$work/stage" ! -type d ! -path "$work/stage/pkg/yang/*.yang" | wc -l)" -eq "$(wc -l < "$work/expected")" ] ||
    fail "files outside the prefix"

# The plug-in's path of the model is outside the prefix: what puts it there is said.
if [ ! -e "$work/stage/pkg" ]; then
    sed -n '/^ *install -D/,/[^\\]$/p' "$work/log" > "$work/install_model"
    sh "$work/install_model"
fi
cmp "$work/stage/pkg/yang/openconfig-macsec.yang" "$sources/yang/openconfig-macsec.yang"

for text in "$work" "$sources"; do
    if grep -rlF "$text" "$root"; then fail "files name $text"; fi
done

# Without the build's or the prefix's own files at hand only those beside the tool can serve.
mv "$root" "$work/moved"
tool=$work/moved/bin/ocmap
request=$work/moved/share/doc/oc-macsec/examples/policies/merge.xml
"$tool" forward "$request" > "$work/native"
diff "$work/native" <("$build/ocmap" forward "$request") || fail "the installed tool maps otherwise"
# The tool keeps others from looking into its process, and yet finds where it lies itself.
preloaded=()
if [ "$(id -u)" -eq 0 ]; then
    chmod 755 "$work"
    if [[ ${LD_PRELOAD:-} =~ [^:]*/libmodel_file.so ]]; then
        cp "${BASH_REMATCH[0]}" "$work"
        preloaded=(LD_PRELOAD="$work/libmodel_file.so" OC_MACSEC_MODEL_FILE=/dev/null)
    fi
    for mode in 755 711; do
        chmod $mode "$tool"
        env "${preloaded[@]}" setpriv --reuid=65534 --regid=65534 --clear-groups "$tool" forward "$request" |
            cmp - "$work/native"
    done
fi
mv "$work/moved/$lib/oc-macsec/libymap_oc_macsec.so" "$work/moved/elsewhere.so"
if "$tool" forward "$request" 2> "$work/error"; then fail "works without the installed plug-in"; fi
grep -qF "$work/moved/$lib/oc-macsec/libymap_oc_macsec.so" "$work/error" || fail "looks elsewhere: $(cat "$work/error")"
"$tool" forward "$request" --plugin "$work/moved/elsewhere.so" | cmp - "$work/native"

# What a walk asks of the models is in the tool; the files are for what checks and keeps data, and for who names them.
models=$work/moved/share/yang/modules/oc-macsec
mv "$models" "$work/models"
"$tool" forward "$request" --plugin "$work/moved/elsewhere.so" | cmp - "$work/native"
"$tool" forward "$request" --plugin "$work/moved/elsewhere.so" --yang "$work/models" | cmp - "$work/native"
"$tool" reverse "$work/native" --plugin "$work/moved/elsewhere.so" > /dev/null
for command in "forward $request --check" "forward $request --yang $models" "edit $request --store $work/store" tree; do
    # shellcheck disable=SC2086 # words
    if "$tool" $command --plugin "$work/moved/elsewhere.so" 2> "$work/error"; then fail "'$command' needs no models"; fi
    grep -qxF "error: cannot use the YANG directory $models" "$work/error" || fail "$command: $(cat "$work/error")"
done
mv "$work/models" "$models"

# Programs of others.
mv "$work/moved/elsewhere.so" "$work/moved/$lib/oc-macsec/libymap_oc_macsec.so"
consumer=$sources/tests/install/consumer
CC=$(cached CMAKE_C_COMPILER) CXX=$(cached CMAKE_CXX_COMPILER)
export CC CXX
{
    "$cmake" -S "$consumer" -B "$work/by_cmake" -G "$(cached CMAKE_GENERATOR)" -DCMAKE_PREFIX_PATH="$work/moved" \
        -DDOCUMENT="$request" && "$cmake" --build "$work/by_cmake" --target forward surface run
} > "$work/log" 2>&1 || fail "$(cat "$work/log")"
diff "$work/native" "$work/by_cmake/native.xml" || fail "a program built by CMake maps otherwise"

packages() {
    PKG_CONFIG_PATH=$work/moved/$lib/pkgconfig pkg-config "$@"
}
# shellcheck disable=SC2046 # flags are words
{
    "$CXX" -std=c++20 "$consumer/forward.cpp" $(packages --cflags --libs oc-macsec-tqm) -o "$work/forward"
    "$CC" "$consumer/surface.c" $(packages --cflags oc-macsec) -o "$work/surface"
    echo '#include <tqm_map.h>' | "$CXX" $(packages --cflags oc-macsec) -x c++ -fsyntax-only - ||
        fail "the headers do not stand alone"
}
LD_LIBRARY_PATH=$work/moved/$lib "$work/forward" "$(packages --variable=plugindir oc-macsec)/libymap_oc_macsec.so" \
    "$request" | diff "$work/native" - || fail "a program built with pkg-config maps otherwise"
[ -e "$(packages --variable=yangdir oc-macsec)/openconfig-macsec.yang" ] || fail "pkg-config knows no models"
gzip -dc "$work/moved/share/man/man1/ocmap.1.gz" | cmp - "$sources/docs/ocmap.1"
