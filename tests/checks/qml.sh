#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# what is known of the QML modules is what they have, and QML in files and documents is clean
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

programs=$(pkg-config --variable=host_bins Qt5Core)
modules=$build/qml
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export QT_QPA_PLATFORM=offscreen QML2_IMPORT_PATH=$modules XDG_RUNTIME_DIR=$work ZOP_ROOT=$work/root

# The types of each module, with the command that writes them in their first lines.
while IFS= read -r -d '' types; do
    module=$(sed -n 's/^module //p' "$(dirname "$types")/qmldir")
    compgen -G "$modules/${module//.//}/*.so" >/dev/null || mistake "$module is not built: ./dev build builds it"
    "$programs/qmlplugindump" -nonrelocatable "$module" 1.0 >"$work/types" || mistake "$module: its types cannot be read"
    diff "$types" "$work/types" || mistake "QML2_IMPORT_PATH=$modules qmlplugindump -nonrelocatable $module 1.0 >$types"
done < <(sources plugins.qmltypes)

# Blocks of documents are documents of their own.
for document in docs/*.md; do
    awk -v name="$work/$(basename "$document" .md)" '
        /^```/ { inside = $0 == "```qml"; if (inside) file = name "-" NR ".qml"; next }
        inside { print > file }' "$document"
done
while IFS= read -r -d '' file; do
    "$programs/qmllint" "$file" || mistake "$file: qmllint is not content"
done < <(sources .qml && find "$work" -name '*.qml' -print0)

# What others learn from has nothing that comes from nowhere, either.
"$programs/qmllint" -U -I "$modules" -I "$("$programs/qmake" -query QT_INSTALL_QML)" \
    examples/first/qml/*.qml "$work"/qml-*.qml || mistake "qmllint is not content with these"
finish
