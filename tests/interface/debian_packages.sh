#!/usr/bin/env bash
# Builds the Debian packages of a build and checks them against what it
# installs: together they hold exactly the installed files, each in the
# package Debian would put it in; unpacked into a root of their own, the
# programs run. Arguments: the build folder, the programs to run ("" for a
# build whose programs this machine cannot run).
set -euo pipefail
build=$1 programs=${2:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

(cd "$build" && cpack -G DEB -B "$work/debs" >/dev/null)
DESTDIR=$work/installed cmake --install "$build" --prefix /usr >/dev/null
(cd "$work/installed" && find . ! -type d | sed 's|^\./|/|' | sort) >"$work/manifest"

: >"$work/packaged"
for package in libwex1 libwex-dev wex-tools; do
  deb=$(find "$work/debs" -maxdepth 1 -name "${package}_*.deb")
  [[ -n $deb ]] || { echo "no package $package"; exit 1; }
  dpkg-deb -c "$deb" | awk '$1 !~ /^d/ {print $6}' | sed 's|^\./|/|' | sort >"$work/$package.files"
  cat "$work/$package.files" >>"$work/packaged"
  dpkg-deb -x "$deb" "$work/root"
done
sort -o "$work/packaged" "$work/packaged"
if ! diff -u "$work/manifest" "$work/packaged"; then
  echo "the packages do not hold what the build installs"
  exit 1
fi
# Where each kind of file goes.
wrong=$(grep -v '^/usr/lib/lib[a-z_]*\.so\.[0-9.]*$' "$work/libwex1.files" || true)
wrong+=$(grep -vE '^/usr/(include/|lib/(lib[a-z_]*\.(a|so)|pkgconfig/|cmake/))' "$work/libwex-dev.files" || true)
wrong+=$(grep -vE '^/usr/(bin|share)/' "$work/wex-tools.files" || true)
[[ -z $wrong ]] || { printf 'in the wrong package:\n%s\n' "$wrong"; exit 1; }
for program in $programs; do
  "$work/root/usr/bin/$program" --version >/dev/null || { echo "$program does not run unpacked"; exit 1; }
done
echo "three packages, holding what the build installs"
