#!/usr/bin/env bash
# vesk-cli's man page and shell completions against the program itself:
# every command of `vesk-cli --help` is in all three, and the bash completion
# offers commands, options and the ids, projects and sections of a real
# library (made here with vesk-cli itself, in a scratch folder).
#   cli_completions_test.sh VESK_CLI BASH_COMPLETION ZSH_COMPLETION MAN_PAGE
set -u
cli=$1 bash_completion=$2 zsh_completion=$3 man_page=$4
failures=0
fail() {
    printf 'FAIL: %s\n' "$*"
    failures=$((failures + 1))
}

# The commands, as --help lists them: the indented words that start a line,
# and those after a "|" ("pin ID | unpin ID").
commands=$("$cli" --help | awk '/^  [a-z]/ { print $1; for (i = 2; i < NF; i++) if ($i == "|" && $(i + 1) ~ /^[a-z]/) print $(i + 1) }' | sort -u)
[[ $(wc -w <<<"$commands") -ge 17 ]] || fail "found only these commands in --help: $commands"
# shellcheck disable=SC1090,SC2086,SC2154
bash_commands=$(source "$bash_completion" && printf '%s\n' $_vesk_cli_commands | sort -u)
[[ $bash_commands == "$commands" ]] || fail "the bash completion's commands [${bash_commands//$'\n'/ }] are not --help's [${commands//$'\n'/ }]"
for command in $commands; do
    grep -qE "'$command:|\"$command:" "$zsh_completion" || fail "the zsh completion lacks $command"
    grep -q "^\.BI\{0,1\} ${command//-/\\\\-}" "$man_page" || fail "the man page lacks $command"
done
for option in --root --json --project --pinned --set --title --body --body-file --before --into; do
    grep -q -- "$option" "$bash_completion" || fail "the bash completion lacks $option"
    grep -q -- "$option" "$zsh_completion" || fail "the zsh completion lacks $option"
    grep -q -- "${option//-/\\\\-}" "$man_page" || fail "the man page lacks $option"
done

bash -n "$bash_completion" || fail "the bash completion does not parse"
if command -v zsh >/dev/null 2>&1; then
    zsh -n "$zsh_completion" || fail "the zsh completion does not parse"
else
    fail "zsh is missing (scripts/setup.sh installs it)"
fi

# A small library with a space in a project's name.
library=$(mktemp -d)
trap 'rm -rf "$library"' EXIT
"$cli" --root "$library" project-new "Work Stuff" >/dev/null || fail "project-new failed"
work_id=$("$cli" --root "$library" new --project "Work Stuff" --title Review --body 'Check {{language}} for {{audience}}')
inbox_id=$("$cli" --root "$library" new --title Note --body plain)
[[ -n $work_id && -n $inbox_id ]] || fail "could not make prompts"

# Completes the command line "$@" (the last word being completed) and prints
# the offers, one a line, sorted.
complete_line() {
    (
        set +u # as in an interactive shell, where completion runs
        # shellcheck disable=SC1090
        source "$bash_completion"
        # shellcheck disable=SC2317
        compopt() { :; } # only valid while bash itself completes
        COMP_WORDS=("$cli" "$@")
        COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
        COMP_LINE="${COMP_WORDS[*]}"
        COMP_POINT=${#COMP_LINE}
        COMPREPLY=()
        _vesk_cli
        printf '%s\n' "${COMPREPLY[@]}" | sort
    )
}
expect() {
    local want=$1
    shift
    local got
    got=$(complete_line "$@")
    [[ $got == "$want" ]] || fail "completing [$*]: got [${got//$'\n'/|}], want [${want//$'\n'/|}]"
}
quoted() { printf '%q' "$1"; }

expect $'place\nplace-section' pl
expect $'project-new\nproject-rename\nproject-trash\nprojects' proj
expect 'sections' sec
expect $'--help\n--json\n--root' --
expect $'--before\n--into' --root "$library" place "$inbox_id" --
expect "$(printf '%s\n%s' "$(quoted "$inbox_id")" "$(quoted "$work_id")" | sort)" --root "$library" show ""
expect "$(quoted "$work_id")" --root "$library" show Wo
expect "$(quoted "$work_id")" --root "$library" show "Work\\ St"
expect $'Inbox\nWork\\ Stuff' --root "$library" move "$inbox_id" ""
expect 'Work\ Stuff' --root "$library" list --project W
expect $'@pinned\nInbox\nWork\\ Stuff' --root "$library" place "$work_id" --into ""
expect $'@pinned\nInbox\nWork\\ Stuff' --root "$library" place-section Inbox --before ""
expect "$(quoted "$inbox_id")" --root "$library" place "$work_id" --before I
expect $'audience=\nlanguage=' --root "$library" fill "$work_id" --set ""
expect 'Inbox' --root = "$library" project-trash I
expect "" --root "$library" project-new ""
expect "" --root "$library" show "$inbox_id" ""

if ((failures)); then
    printf '%d failed\n' "$failures"
    exit 1
fi
printf 'vesk-cli man page and completions: all checks passed\n'
