#!/bin/sh
# A Debian package's files, without installing it: `fetch_package.sh PACKAGE FOLDER`
# downloads and unpacks it into FOLDER, unless that has been done there before. The status
# is 1, after a message, where it cannot be had. Callers may run at the same time.
set -eu

package=$1
folder=$2
[ ! -e "$folder" ] || exit 0
mkdir -p "$(dirname "$folder")"
new=$(mktemp -d "$folder.XXXXXX")
trap 'rm -rf "$new"' EXIT
if ! (cd "$new" && apt-get download -qq -o APT::Sandbox::User=root "$package") ||
  ! dpkg-deb -x "$new"/*.deb "$new/unpacked"; then
  echo "$package cannot be downloaded" >&2
  exit 1
fi
# Where another was faster its folder stands, and is as good.
mv -T "$new/unpacked" "$folder" 2>/dev/null || [ -e "$folder" ]
