#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Makes the folder FOLDER a system of the 32-bit ARM target to build against and to run programs in: Qt and what it
# needs, from the mirror that this machine takes its own packages from.
#
# The packages cannot be installed beside those of the machine, so a package manager of its own gets them: with its own
# lists, and its own idea of what is installed, which is nothing.
set -euo pipefail

(($# == 1)) || {
    echo "Usage: $0 FOLDER" >&2
    exit 2
}
umask 022 # an ordinary user runs what is in there
folder=$1.new
rm -rf "$1" "$folder"
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)
manager=$folder/manager
mkdir -p "$manager"/{state/lists/partial,cache/archives/partial,packages}
touch "$manager/status"

# The machine's own sources, of these the release itself, by its code name or another, such as "stable"; they are known
# when the package lists are.
# shellcheck source=/dev/null
release=$(source /etc/os-release && echo "$VERSION_CODENAME")
sources() {
    # shellcheck disable=SC2016 # words of apt-get
    apt-get indextargets --format 'deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $(REPO_URI) $(RELEASE) main' \
        'Created-By: Packages' "Codename: $release" 'Component: main'
}
source=$(sources | head -n 1)
[[ -n $source ]] || {
    apt-get update
    source=$(sources | head -n 1)
}
[[ -n $source ]] || {
    echo "$0: this machine knows no source of packages for '$release'" >&2
    exit 1
}
echo "$source" >"$manager/sources.list"

cat >"$manager/apt.conf" <<CONF
APT::Architecture "armhf";
APT::Architectures { "armhf"; };
APT::Install-Recommends "false";
APT::Sandbox::User "";
Dir::State "$manager/state";
Dir::State::status "$manager/status";
Dir::Cache "$manager/cache";
Dir::Etc::sourcelist "$manager/sources.list";
Dir::Etc::sourceparts "-";
CONF
export APT_CONFIG=$manager/apt.conf

apt-get update
apt-get install -y --download-only libqt5core5a libqt5network5 libqt5qml5 libqt5test5 libstdc++6 zlib1g
# These are only unpacked, as what they need is for building on that system.
(cd "$manager/packages" && apt-get download qtbase5-dev qtdeclarative5-dev qt5-qmake qt5-qmltooling-plugins zlib1g-dev)

for package in "$manager"/cache/archives/*.deb "$manager"/packages/*.deb; do
    dpkg-deb --extract "$package" "$folder"
done
rm -rf "$manager" "${folder:?}/etc" # of the emulated programs, the machine's own settings are seen
# Links to the target's root lead into the folder.
while IFS= read -r link; do
    ln -snrf "$folder$(readlink "$link")" "$link"
done < <(find "$folder" -type l -lname '/*')
# Qt's own programs run on this machine.
mkdir -p "$folder/usr/lib/qt5"
ln -s /usr/lib/qt5/bin "$folder/usr/lib/qt5/bin"
mv "$folder" "$1"
