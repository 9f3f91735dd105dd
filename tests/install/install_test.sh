#!/usr/bin/env bash
# Installs the build below a directory of its own: the right files with the right modes, nothing in them that names this
# directory or the build's, and a tool that works with the installed plug-in and models, also when all of it is moved.
set -euo pipefail
cmake=$1 sources=$2 build=$3 prefix=$4 lib=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH

fail() {
    echo "$*"
    exit 1
}

# The list of the last installation belongs to whoever installs.
manifest=$build/install_manifest.txt
if [ -e "$manifest" ]; then cp "$manifest" "$work/manifest"; fi
(umask 022 && DESTDIR=$work/stage "$cmake" --install "$build" --strip > "$work/log")
if [ -e "$work/manifest" ]; then cp "$work/manifest" "$manifest"; else rm -f "$manifest"; fi

root=$work/stage$prefix
cat > "$work/expected" <<END
644 include/oc-macsec/tqm_log.h
644 include/oc-macsec/tqm_map.h
644 include/oc-macsec/tqm_rcode.h
644 $lib/oc-macsec/libtqm.so
644 $lib/oc-macsec/libymap_oc_macsec.so
644 $lib/pkgconfig/oc-macsec.pc
644 share/bash-completion/completions/ocmap
644 share/doc/oc-macsec/README.md
644 share/man/man1/ocmap.1.gz
755 bin/ocmap
END
(cd "$sources" && find yang -name '*.yang' -printf '644 share/yang/modules/oc-macsec/%P\n' &&
    find docs \( -name '*.md' -o -name '*.png' \) -printf '644 share/doc/oc-macsec/docs/%P\n' &&
    find examples -type f ! -name run.sh -printf '644 share/doc/oc-macsec/examples/%P\n') >> "$work/expected"
find "$root" ! -type d -printf '%m %P\n' > "$work/found"
diff <(sort "$work/expected") <(sort "$work/found") || fail "the installed files differ (< expected, > found)"
[ -z "$(find "$work/stage" -type d ! -perm 755)" ] || fail "a directory has another mode than 755"
[ "$(find "$work/stage" ! -type d | wc -l)" -eq "$(wc -l < "$work/expected")" ] || fail "files outside the prefix"

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
if [ "$(id -u)" -eq 0 ]; then
    chmod 755 "$work"
    for mode in 755 711; do
        chmod $mode "$tool"
        setpriv --reuid=65534 --regid=65534 --clear-groups "$tool" forward "$request" | cmp - "$work/native"
    done
fi
mv "$work/moved/$lib/oc-macsec/libymap_oc_macsec.so" "$work/moved/elsewhere.so"
if "$tool" forward "$request" 2> "$work/error"; then fail "works without the installed plug-in"; fi
grep -qF "$work/moved/$lib/oc-macsec/libymap_oc_macsec.so" "$work/error" || fail "looks elsewhere: $(cat "$work/error")"
"$tool" forward "$request" --plugin "$work/moved/elsewhere.so" | cmp - "$work/native"

flags=$(PKG_CONFIG_PATH=$work/moved/$lib/pkgconfig pkg-config --define-variable=prefix="$work/moved" --cflags oc-macsec)
# shellcheck disable=SC2086 # flags are words
for language in c c++; do
    echo '#include <tqm_map.h>' | ${CC:-cc} $flags -x $language -fsyntax-only - || fail "the headers do not stand alone"
done
gzip -dc "$work/moved/share/man/man1/ocmap.1.gz" | cmp - "$sources/docs/ocmap.1"
