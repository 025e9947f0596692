#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the library exports exactly the public classes and functions
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

library=$build/src/libmorvek-network.so.1
need "$library"

# Declarations of the headers, each on one line, without comments and preprocessor.
declarations() {
    cat include/*.h | sed -E 's,//.*,,; /^[[:space:]]*#/d' | tr '\n' ' ' | sed -E 's,/\*([^*]|\*[^/])*\*+/,,g' \
        | sed -E 's/([;{}])/\1\n/g; s/(public|private|protected|Q_SIGNALS)( slots)?:/\n&\n/g' | sed -E 's/^ +//'
}

# "class NAME" for each exported class, "member CLASS NAME" for each of its public functions that is not inline,
# "function NAME TYPE" for each exported free function, TYPE being that of an operator's last argument.
public_names() {
    declarations | awk '
        function name_of(text) {
            sub(/ *\(.*/, "", text)
            if (match(text, /operator *[^ ]+$/))
                return substr(text, RSTART)
            sub(/^.*[ *&]/, "", text)
            return text
        }
        /^(public|Q_SIGNALS):/ { open = 1; next }
        /^(private|protected):/ { open = 0; next }
        /^(typedef |enum |class |struct )/ && !/MORVEK_NETWORK_EXPORT/ { if (/{/) skip = 1; next }
        /^class MORVEK_NETWORK_EXPORT/ { class = $3; open = 0; print "class", class; next }
        skip { if (/}/) skip = 0; next }
        class && /^}/ { class = ""; next }
        class && open && /\(/ && !/{/ && !/= *(delete|default)/ && !/^(Q_DISABLE_COPY|friend|using)/ {
            sub(/^ *Q_OBJECT */, "")
            print "member", class, name_of($0)
        }
        class && /{/ { skip = 1; next }
        !class && /MORVEK_NETWORK_EXPORT.*\(/ {
            name = name_of($0)
            type = ""
            if (name ~ /^operator/) {
                type = $0
                sub(/ *&[^&]*$/, "", type)
                sub(/^.*[ (]/, "", type)
            }
            print "function", name, type
        }'
}

exported=$(nm --dynamic --defined-only --format=posix "$library" | awk '{ print $1 }' | sort -u)
readable=$(c++filt <<<"$exported")
expected=$(public_names)
[[ -n $expected ]] || mistake "no public class was found in include/"

has() {
    grep -qF -- "$1" <<<"$readable"
}

allowed=() # patterns of what may be exported
while read -r kind first second; do
    case $kind in
    class)
        allowed+=("morvek::$first::[~A-Za-z0-9_]+(\\(.*)?( const)?"
            "morvek::$first::operator[=!<]+\\(.*" "(vtable|typeinfo|typeinfo name) for morvek::$first")
        has "morvek::$first::" || mistake "class $first is not exported"
        ;;
    member)
        has "morvek::$first::$second(" || mistake "$first::$second is not exported"
        ;;
    function)
        if [[ $first == operator* ]]; then
            allowed+=("morvek::$first\\(QTextStream&, (const )?morvek::$second( const)?&\\)")
            grep -qE "^morvek::$first\\(QTextStream&, morvek::$second( const)?&\\)" <<<"$readable" \
                || mistake "$first for $second is not exported"
        else
            allowed+=("$first")
            grep -qxF "$first" <<<"$exported" || mistake "$first is not exported under that name"
        fi
        ;;
    esac
done <<<"$expected"

pattern=$(printf '|%s' "${allowed[@]}")
while IFS= read -r symbol; do
    mistake "exported, but not public: $symbol"
done < <(grep -vxE "${pattern:1}" <<<"$readable")
finish
