# The packages of the library and the plugin are unpacked where a Yosys is: it finds the plugin by its
# name, and the plugin records a design.
. "${0%/*}/flow.sh"
locate elevator

(cd "$1" && cpack -G DEB -B "$work/debs" -D 'CPACK_COMPONENTS_ALL=library;yosys' >"$work/log" 2>&1) ||
  { cat log; fail "no packages"; }
for package in libkpt0 yosys-plugin-kpt; do
  dpkg-deb --field debs/"$package"_*.deb Package Version Depends
  dpkg-deb --extract debs/"$package"_*.deb root
done

# A plugin fits only the version of Yosys that it was built for.
version=$(yosys -V | sed -n 's/^Yosys \([0-9]*\.[0-9]*\).*/\1/p')
next=${version%.*}.$((${version#*.} + 1))
dpkg-deb --field debs/yosys-plugin-kpt_*.deb Depends | grep -qF "yosys (>= $version), yosys (<< $next~)" ||
  fail "not for Yosys $version"

# As packaged, after the symbols are stripped.
"${0%/*}/../install/elf_is_hardened" $(find root -type f -name '*.so*') || fail "what is packaged is not hardened"

# Where a Yosys looks for plugins: it says so when there is none of the name.
plugins_of() {
  realpath -m "$("$1" -m kpt_none 2>&1 | sed -n 's|.*: \(/.*\)/kpt_none\.so: .*|\1|p')"
}
plugins=$(plugins_of yosys)
[ -e "root$plugins/kpt.so" ] || fail "the plugin is not in $plugins, where Yosys looks"

# Some look below the folder of their program, others always at the same place, where a test puts nothing.
mkdir -p root/usr/bin
cp "$(command -v yosys)" root/usr/bin/yosys
plugin=kpt
[ "$(plugins_of root/usr/bin/yosys)" = "$(realpath "root$plugins")" ] || plugin=root$plugins/kpt.so
root/usr/bin/yosys -m "$plugin" -p 'help kpt_track' >log 2>&1 || { cat log; fail "the plugin is not found"; }
grep -q 'Follows every flip-flop bit' log || fail "no help"

# A prefix of another kind, where the plugin is loaded by its path.
for component in library yosys; do
  cmake --install "$1" --prefix "$work/prefix" --component $component >log
done
KPT_PLUGIN=$(find "$work/prefix" -name kpt.so)
run log "read_verilog $source; kpt_track -top $top; synth -flatten -top $top; kpt_stage"
expect log '28 of 28 reference registers accounted for'
