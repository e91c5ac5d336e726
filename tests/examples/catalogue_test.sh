#!/bin/bash
# Runs the catalogue demonstration on good, damaged and missing lists.
# Usage: catalogue_test.sh CATALOGUE
set -uo pipefail

catalogue=$1
command=("$catalogue")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TMPDIR=$work/tmp
failures=0

fail() {
    echo "FAILED: $case: $*"
    sed 's/^/    /' "$work/out" "$work/err"
    failures=$((failures + 1))
}

# Runs the program and expects an exit status.
run() {
    local expected=$1 status
    shift
    "${command[@]}" "$@" >"$work/out" 2>"$work/err" </dev/null
    status=$?
    ((status == expected)) || fail "exit status $status instead of $expected"
}

begin() {
    case=$1
    echo "-- $case"
    rm -rf "$work"/{tmp,lists,files}
    mkdir "$work"/{tmp,lists,files}
}

says() {
    grep -qF -- "$1" "$work/out" || fail "does not say: $1"
}

# Any number of blanks stands for one.
saysSpaced() {
    [[ $(tr -s ' ' <"$work/out") == *"$1"* ]] || fail "does not say: $1"
}

complains() {
    grep -qF -- "$1" "$work/err" || fail "does not complain: $1"
}

leavesNothing() {
    local left
    left=$(find "$work/tmp" "$work/files" -mindepth 1)
    [[ -z $left ]] || fail "leaves behind: $left"
}

entry() {
    printf 'Package: %s\nVersion: %s\nSection: %s\nInstalled-Size: %s\nMaintainer: %s\n' "$@"
    printf 'Description: the package\n of that name\n\n'
}

# 200 packages in two lists that share three; one has an entry longer than a record that is read at once.
writeLists() {
    local number
    {
        entry bash 5.2 shells 7000 'Shell People <shell@example.org>'
        entry bash-builtins 5.2 utils 1000 'Shell People <shell@example.org>'
        for number in {100..159}; do
            entry "editor-$number" 1.0 editors "$number" 'Debian QA Group <packages@qa.debian.org>'
        done
        for number in {100..199}; do
            entry "python3-$number" 3.0 python "$((number * 10))" 'Python People <python@example.org>'
        done
    } >"$work/lists/main_Packages"
    {
        entry bash 5.2 shells 7000 'Shell People <shell@example.org>'
        entry bash 5.3 shells 7001 'Shell People <shell@example.org>'
        entry editor-100 1.0 editors 100 'Debian QA Group <packages@qa.debian.org>'
        entry python3-100 3.0 python 1000 'Python People <python@example.org>'
        for number in {1..36}; do
            entry "tool-$number" 2.0 tools 5 'Tool People <tool@example.org>'
        done
        printf 'Package: long\nVersion: 1\nProvides: %0100000d\n' 0
    } | gzip >"$work/lists/updates_Packages.gz"
}

# The answers without the times they took.
answers() {
    sed 's/, time: .*//' "$1"
}

begin "answers are right"
writeLists
run 0 --lists "$work/lists"
says "entries: 203,"
says "3 entries are in two lists and were refused by the unique index"
says "packages: 200,"
answers "$work/out" >"$work/answers"
[[ $(grep -A3 '^The package named bash' "$work/answers" | awk 'NR > 2 { print $1, $2, $3, $4 }') == \
"bash 5.2 shells 7000
bash 5.3 shells 7001" ]] || fail "the package named bash"
[[ $(grep -A4 '^The 10 largest' "$work/answers" | awk 'NR > 2 { print $1, $2, $4 }') == \
"bash 5.3 7001
bash 5.2 7000
python3-199 3.0 1990" ]] || fail "the largest"
[[ $(grep -A23 '^The first package of section' "$work/answers" | awk 'NR > 2 && /editor-/ { print $1 }') == \
$(printf 'editor-%s\n' {100..120}) ]] || fail "the first of a section"
says "found under Debian QA Group <packages@qa.debian.org>"
[[ $(grep -A2 '^The packages of DEBIAN QA GROUP' "$work/answers") == *$'\n  packages: 60' ]] || fail "the maintainer"
[[ $(grep -A5 '^The first keys' "$work/answers" | tail -n +2) == \
$(printf '  python3-%s 3.0\n' {100..104}) ]] || fail "the first keys"
says "1 records are longer than one read"
[[ $(grep -A2 '^A step through' "$work/answers") == *$'\n  records: 200' ]] || fail "the step"
[[ $(grep -A5 '^A position is kept' "$work/answers" | awk 'NR > 2 { print $1, $2 }') == \
"bash 5.2
tool-9 2.0
bash 5.2
bash 5.3" ]] || fail "the position"
[[ $(grep -A6 '^The packages at the quarters' "$work/answers" | awk 'NR > 2 { print $1 }') == \
"bash
python3-151
python3-101
editor-113
long" ]] || fail "the quarters"
says "0.00 percent, or 0 in a million; at that percentage stands bash"
leavesNothing

begin "all bytes are counted"
entry small 1 tools 1 'Tool People <tool@example.org>' >"$work/lists/a_Packages"
run 0 --lists "$work/lists"
says "$((340 + $(wc -c <"$work/lists/a_Packages") - 1)) bytes in all; 0 records"
printf 'Package: long\nVersion: 1\nProvides: %0300000d\n' 0 >"$work/lists/b_Packages"
run 0 --lists "$work/lists"
says "$((2 * 340 + $(cat "$work"/lists/*_Packages | wc -c) - 1)) bytes in all; 1 records"
leavesNothing

begin "changes have their effect and are taken back"
writeLists
run 0 --lists "$work/lists"
for line in "before section demonstration has 0" "after the update section demonstration has 1" \
    "after the update back section demonstration has 0" "after the delete Key value not found" \
    "after the insert found" "before section editors has 60" "inside the transaction section editors has 0" \
    "after the abort section editors has 60" "deletes: 60"; do
    saysSpaced "$line"
done

begin "bulk operations"
writeLists
run 0 --lists "$work/lists"
[[ $(grep -A6 '^A bulk read' "$work/out" | awk 'NR > 1 { print $1, $2, $3 }' | head -5) == \
$(printf 'python3-%s 3.0 %s0\n' 191 191 192 192 193 193 194 194 195 195) ]] || fail "the bulk read"
[[ $(grep -A6 '^A bulk read' "$work/out") == *"  packages: 9,"* ]] || fail "the amount of the bulk read"
for line in "before section demonstration has 0" "inserted 60 records in 1 requests" \
    "after the bulk insert section demonstration has 60" "deleted 60 records in 1 requests" \
    "after the bulk delete section demonstration has 0"; do
    saysSpaced "$line"
done

begin "a long record in chunks"
writeLists
run 0 --lists "$work/lists"
lengthAfter() {
    sed -n "s/^  after $1  *\([0-9]*\) bytes\$/\1/p" "$work/out"
}
long=$(lengthAfter "the appends")
((long >= 1024 * 1024)) || fail "not long"
(($(lengthAfter "an insert") == long + 1000 && $(lengthAfter "a delete") == long - 1000)) || fail "the changes"
(($(lengthAfter "a truncation") == 340)) || fail "the truncation"
says "[ a chunk overwritten in the middle ]"

begin "statistics"
writeLists
run 0 --lists "$work/lists"
for line in "records 200" "fixed part of a record 340" "indexes 4" "ascending refused 200" \
    "2 section 164 40 ZString ascending allowed 6" "3 installed size 332 4 Unsigned Binary descending"; do
    saysSpaced "$line"
done

begin "a second run gives the same answers"
writeLists
run 0 --lists "$work/lists"
answers "$work/out" >"$work/first"
run 0 --lists "$work/lists"
answers "$work/out" | cmp -s "$work/first" - || fail "other answers"
leavesNothing

begin "a file that is named is kept, and made anew by the next run"
writeLists
run 0 --lists "$work/lists" --file "$work/files/packages.vnt"
[[ -s $work/files/packages.vnt ]] || fail "no file"
answers "$work/out" >"$work/first"
run 0 --lists "$work/lists" --file "$work/files/packages.vnt"
answers "$work/out" | cmp -s "$work/first" - || fail "other answers"

begin "a temporary file can be kept"
writeLists
run 0 --lists "$work/lists" --keep
kept=$(sed -n 's/^The file is kept: //p' "$work/out")
[[ $kept == "$work"/tmp/* && -s $kept ]] || fail "not kept: $kept"

begin "a file of another kind is left alone"
writeLists
echo "precious" >"$work/files/letter"
run 1 --lists "$work/lists" --file "$work/files/letter"
complains "$work/files/letter: "
[[ $(<"$work/files/letter") == precious && $(ls "$work/files") == letter ]] || fail "changed"

begin "no directory"
run 1 --lists "$work/none"
complains "$work/none: No such file or directory"
leavesNothing

begin "no lists"
touch "$work/lists/main_Release" "$work/lists/lock"
run 1 --lists "$work/lists"
complains "$work/lists: no package lists there"
leavesNothing

begin "only empty lists"
touch "$work/lists/main_Packages"
run 1 --lists "$work/lists"
complains "the package lists are empty"
leavesNothing

# Each of these follows a good entry of seven lines and a blank one.
damaged() {
    begin "damaged entry: $1"
    {
        entry good 1 tools 1 'Tool People <tool@example.org>'
        printf "$2"
    } >"$work/lists/main_Packages"
    run 1 --lists "$work/lists"
    complains "$work/lists/main_Packages: entry 2 (line 9): $1"
    leavesNothing
}
damaged "missing: Package" 'Version: 1\n'
damaged "missing: Version" 'Package: a\n'
damaged "too long: Package" "Package: $(printf '%0100d' 0)\nVersion: 1\n"
damaged "too long: Maintainer" "Package: a\nVersion: 1\nMaintainer: $(printf '%0128d' 0)\n"
damaged "no number: Installed-Size" 'Package: a\nVersion: 1\nInstalled-Size: 1x\n'
damaged "no number: Installed-Size" 'Package: a\nVersion: 1\nInstalled-Size: 4294967296\n'
damaged "no number: Size" 'Package: a\nVersion: 1\nSize:\n'
damaged "a line without a field" 'Package: a\nVersion: 1\nhello\n'
damaged "not a text" 'Package: a\0b\nVersion: 1\n'

begin "fields at their limits"
printf 'Package: %099d\nVersion: %063d\nSection: %039d\nMaintainer: %0127d\nInstalled-Size: 4294967295\n' \
    1 2 3 4 >"$work/lists/main_Packages"
run 0 --lists "$work/lists"
says "4294967295"
leavesNothing

begin "binary garbage"
head -c 100000 "$catalogue" >"$work/lists/main_Packages"
run 1 --lists "$work/lists"
complains "$work/lists/main_Packages: entry "
leavesNothing

begin "a list that cannot be unpacked"
echo "no archive" >"$work/lists/main_Packages.lz4"
run 1 --lists "$work/lists"
complains "$work/lists/main_Packages.lz4: "
leavesNothing

begin "no place for the file"
writeLists
run 1 --lists "$work/lists" --file "$work/none/packages.vnt"
complains "cannot make $work/none/packages.vnt: "
TMPDIR=$work/none run 1 --lists "$work/lists"
complains "$work/none/catalogue-"
leavesNothing

begin "no permission"
writeLists
run 1 --lists "$work/lists" --file /sys/packages.vnt
complains "cannot make /sys/packages.vnt: "

begin "no room for the file"
writeLists
command=(bash -c 'ulimit -f 64 && exec "$@"' - "$catalogue")
run 1 --lists "$work/lists"
command=("$catalogue")
complains "catalogue.vnt: "
leavesNothing

begin "no room for the answers"
writeLists
"$catalogue" --lists "$work/lists" >/dev/full 2>"$work/err" </dev/null && fail "exit status 0"
complains "cannot write the answers"
leavesNothing

# The list is a pipe, which gives everything when it is checked and stops halfway when it is loaded.
begin "an interrupted load leaves nothing behind"
writeLists
pipe=$work/lists/pipe_Packages
mkfifo "$pipe"
"$catalogue" --lists "$work/lists" --file "$work/files/packages.vnt" >"$work/out" 2>"$work/err" </dev/null &
program=$!
timeout 20 bash -c 'cat "$1" >"$2"' - "$work/lists/main_Packages" "$pipe"
for _ in {1..200}; do
    [[ -e $work/files/packages.vnt ]] && break
    sleep 0.05
done
[[ -e $work/files/packages.vnt ]] || fail "never began"
exec 9<>"$pipe"
head -c 5000 "$work/lists/main_Packages" >&9
sleep 0.2
kill -INT "$program"
wait "$program"
status=$?
exec 9>&-
((status == 130)) || fail "exit status $status instead of 130"
complains "interrupted"
leavesNothing

begin "options"
run 0 --help
says "Usage: catalogue"
run 2 --unknown
complains "Usage: catalogue"
run 2 surplus
complains "unexpected argument surplus"

echo "$failures failures"
((failures == 0))
