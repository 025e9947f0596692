#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# each public header compiles alone, and so does the code that its comments show, as C++11 and without warnings
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

read -ra qt < <(pkg-config --cflags Qt5Core Qt5Network)
flags=(-std=c++11 -fPIC -Wall -Wextra -Wpedantic -Werror -fsyntax-only -Iinclude -Iplatform -Ikit/include -Itestkit/include -Ihost/platform/installed "${qt[@]/#-I/-isystem}")

# Twice, so that a missing guard is noticed.
twice() {
    printf '#include <%s>\n#include <%s>\n' "$1" "$1"
}

# The code that the comments of a header show, as an application has it: what it includes, then a class Settings with the
# functions that it defines, what it makes with new, and a way to show a text.
shown() {
    local code
    code=$(sed -n '/\\code/,/\\endcode/{/code$/d; s/^ \* \{0,1\}//; p}' "$1")
    grep '^#include' <<<"$code"
    printf '%s\n' '#include <QtCore/QObject>' 'using namespace morvek;' 'class Settings : public QObject {' 'public:' \
        'void show(const QString &text);'
    sed -n 's/^\([^ ].*\) Settings::\(.*)\)$/\1 \2;/p; s/.* \(m_[a-z]*\) = new *\([A-Za-z0-9]*\)(.*);$/\2 *\1;/p' <<<"$code"
    echo '};'
    grep -v '^#include' <<<"$code"
}

for compiler in g++ clang++; do
    for header in {include,platform,kit/include,testkit/include,host/platform/installed}/*.h; do
        twice "${header##*/}" | "$compiler" "${flags[@]}" -x c++ - || mistake "$header: $compiler refuses it"
    done
    while IFS= read -r header; do
        shown "$header" | "$compiler" "${flags[@]}" -x c++ - || mistake "$header: $compiler refuses what it shows"
    done < <(grep -l '\\code' {,kit/}include/*.h)
done
finish
