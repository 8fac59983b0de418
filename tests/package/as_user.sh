# Runs as a user in the clean system in which the package is installed: uses what it has brought.
set -u

wrong=0
cd "$HOME" || exit 1

# expect WHAT STATUS PATTERN COMMAND...: the command ends with that status, and what it says matches.
expect() {
    local what=$1 status=$2 pattern=$3 said got=0
    shift 3
    said=$("$@" </dev/null 2>&1) || got=$?
    if [ "$got" -ne "$status" ] || ! grep -qE -- "$pattern" <<<"$said"; then
        echo "$what: status $got instead of $status, or no \"$pattern\" in: $(head -c 2000 <<<"$said")"
        wrong=1
    fi
}

expect "The version" 0 '^ovphone [0-9]' ovphone --version
expect "The viewer" 0 '^Usage: ovviewer' ovviewer --help
expect "Without a library" 1 'connectivity library' ovphone list
expect "The demo phone" 0 'Nokia N95' ovphone --demo list
[ "$(stat -c %a .local/state/ovphone/phones/demo)" = 700 ] || { echo "The demo phone's copy is not private."; wrong=1; }
expect "Its contacts" 0 '^contacts: 171$' \
    bash -c 'echo "contacts: $(ovphone --demo contacts --format json | grep -c "\"uid\"")"'
expect "Its calendar" 0 'Schwimmen' ovphone calendar --demo --month 2008-07
expect "A new contact" 0 '' ovphone contacts add --demo firstName=Berta mobile=+491713920099
expect "The contact, later" 0 '\+491713920099' ovphone contacts show --demo Berta
expect "A read-only home" 1 'ermission denied' env HOME=/ ovphone --demo list

expect "The manual" 0 'SEE ALSO' man ovphone
expect "A command's manual" 0 'ovphone contacts import \[options\] FILE' man ovphone contacts
expect "The viewer's manual" 0 '--routine NAME' man ovviewer
for page in /usr/share/man/man1/ov*.1.gz; do
    expect "$page" 0 ' - ' lexgrog "$page"
    expect "$page" 0 '^$' mandoc -T lint -W warning "$page"
    expect "$page" 0 '^$' bash -c 'MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$0" >/dev/null' "$page"
done

# What each shell makes of the beginning of a word.
in_bash() {
    bash -c '. /usr/share/bash-completion/bash_completion
        _completion_loader ovphone
        COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMP_LINE="$*" COMP_POINT=${#COMP_LINE}
        _ovphone ovphone "${@: -1}" "${@: -2:1}"
        printf "%s\n" "${COMPREPLY[@]}"' bash "$@" 2>&1 | grep -v compopt
}
in_fish() { fish -c 'complete -C "$argv"' "$@"; }
# In a terminal of its own, in which Tab is pressed; ends when the line has become what is expected.
in_zsh() {
    zsh -f -c '
        zmodload zsh/zpty
        zpty shell "TERM=dumb zsh -f -i"
        zpty -w shell "autoload -Uz compinit && compinit -D -u; unsetopt zle_bracketed_paste; echo re\ady"
        zpty -r -m shell text "*ready*"
        zpty -w -n shell "$2"$'"'\t'"'
        for (( i = 0; i < 300; ++i )); do
            zpty -r -t shell piece && text+=$piece || sleep 0.1
            [[ $text == *$1* ]] && break
        done
        print -r -- "$text"' zsh "$@" | tr -d '\r\a'
}
mkdir -p folder/inner
expect "bash: a command" 0 '^import$' in_bash ovphone contacts imp
expect "bash: an option" 0 '^--month$' in_bash ovphone --demo calendar --mo
expect "bash: a word" 0 '^json$' in_bash ovphone list --format j
expect "bash: a folder" 0 '^folder$' in_bash ovphone list --phones fol
expect "bash: a file" 0 '^folder$' in_bash ovphone contacts import fol
expect "fish: a command" 0 '^import' in_fish 'ovphone contacts imp'
expect "fish: an option" 0 '^--month' in_fish 'ovphone --demo calendar --mo'
expect "fish: a word" 0 '^json' in_fish 'ovphone list --format j'
expect "fish: a folder" 0 '^folder/' in_fish 'ovphone list --phones fol'
expect "fish: a file" 0 '^folder/' in_fish 'ovphone contacts import fol'
while read -r typed becomes; do
    expect "zsh: $typed" 0 "$becomes" in_zsh "$becomes" "$(tr _ ' ' <<<"$typed")"
done <<'LINES'
ovphone_contacts_imp               contacts import
ovphone_--demo_calendar_--mo       calendar --month
ovphone_list_--format_j            --format json
ovphone_list_--phones_fol          --phones folder/
ovphone_contacts_import_fol        contacts import folder/
ovviewer_--mode_ch                 --mode chunks
LINES
exit $wrong
