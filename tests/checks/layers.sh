#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# no layer includes what stands above or beside it
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

# Each layer, and what it sees beside itself, Qt and the standard library.
declare -A sees=(
    [platform]=""
    [include]="platform"
    [usage]=""
    [src]="include platform"
    [host/platform]="platform"
    [host/platform/installed]="platform"
    [host/recorder]="platform"
    [host/daemons]="host/platform platform"
    [host/simulation]="host/daemons host/platform platform"
    [host/machine]="host/daemons host/platform platform"
    [host/replay]="host/simulation host/daemons host/recorder platform"
    [host/stage]="host/simulation host/daemons host/platform platform"
    [host/hostd]="host/stage host/replay host/recorder host/simulation host/machine host/daemons host/platform platform usage"
    [host/zop]="host/recorder host/platform platform usage"
    [kit]="include platform"
    [testkit]="include platform"
    [qml]="kit/include include platform"
    [tools]="kit/include include platform host/platform/installed usage"
    [examples]="kit/include testkit/include include platform"
)

# headers FOLDER...: the names of the headers in these folders
headers() {
    (($#)) || return 0
    git ls-files --cached --others --exclude-standard -- "${@/%//*.h}" | sed 's,.*/,,' | sort -u
}

for layer in "${!sees[@]}"; do
    [[ -d $layer ]] || continue
    read -ra below <<<"${sees[$layer]}"
    own=$(headers "$layer" "${below[@]}")
    everything=$(headers .)
    while IFS=: read -r file line text; do
        name=$(sed -E 's/^[^<"]*[<"]([^>"]+)[>"].*/\1/' <<<"$text")
        # What is named with quotes, or like a header of this project, must be one that the layer sees.
        [[ $text == *\<* ]] && ! grep -qxF "${name##*/}" <<<"$everything" && continue
        [[ $name == *.moc || $name == moc_*.cpp ]] && continue
        grep -qxF "${name##*/}" <<<"$own" || mistake "$file:$line: $layer must not include $name"
    done < <(grep -rnE '^[[:space:]]*#[[:space:]]*include' --include='*.h' --include='*.cpp' "$layer" || true)
done

for room in host/*/; do
    [[ -v sees[${room%/}] ]] || mistake "$room: nothing says what it sees"
done

# Of the platform, the kit takes bells and what it looks at objects with; it neither writes nor logs.
while IFS= read -r place; do
    mistake "$place: not for the kit"
done < <(grep -rnE '[<"](krellogger|zopcontrol[a-z]*|serviceproviderbase)\.h|setAttributes|ZopObject::(create|remove)' kit || true)

while IFS= read -r file; do
    mistake "$file: platform holds declarations only"
done < <(git ls-files --cached --others --exclude-standard platform | grep -v '\.h$' || true)

while IFS= read -r place; do
    mistake "$place: src must not know of host"
done < <(grep -rn 'host/' src include platform --include=CMakeLists.txt --include='*.h' --include='*.cpp' || true)
finish
