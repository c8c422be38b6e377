# bash completion for vesk-cli                             -*- shell-script -*-
# Commands and options, and the library's own prompt ids, projects and
# sections, read with the same vesk-cli (and the same --root) as the command
# line being completed. Works without the bash-completion package's helpers
# and with the bash 3.2 of macOS.

_vesk_cli_commands="projects sections list search show vars fill new pin unpin move trash
project-new project-rename project-trash place place-section"

# Runs vesk-cli with the --root given on the command line, if any.
_vesk_cli_run()
{
    local i word root=""
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if [[ $word == --root ]]; then
            # "--root=DIR" arrives as three words, "=" being a word break.
            if [[ ${COMP_WORDS[i + 1]} == "=" ]]; then
                root=${COMP_WORDS[i + 2]}
            else
                root=${COMP_WORDS[i + 1]}
            fi
        fi
    done
    root=$(_vesk_cli_dequote "$root")
    [[ $root == "~"* ]] && root=$HOME${root#"~"}
    if [[ -n $root ]]; then
        "${COMP_WORDS[0]}" --root "$root" "$@" 2>/dev/null
    else
        "${COMP_WORDS[0]}" "$@" 2>/dev/null
    fi
}

# A word as typed, without its quotes and backslashes.
_vesk_cli_dequote()
{
    local word=$1
    word=${word#[\"\']}
    word=${word%[\"\']}
    printf '%s' "${word//\\/}"
}

# The first column of a vesk-cli command's lines ("ID<tab>title").
_vesk_cli_first_column() { _vesk_cli_run "$@" | cut -f1; }

# Offers the lines a command prints that start with the current word (the
# first argument), each quoted for the shell: ids and project names may hold
# spaces. Read without a pipe, which would set COMPREPLY in a subshell.
_vesk_cli_offer()
{
    local cur line
    cur=$(_vesk_cli_dequote "$1")
    shift
    while IFS= read -r line; do
        [[ -n $line && $line == "$cur"* ]] && COMPREPLY+=("$(printf '%q' "$line")")
    done < <("$@")
}

# Offers what compgen finds, one offer a line (file names may hold spaces).
_vesk_cli_compgen()
{
    local line
    while IFS= read -r line; do
        COMPREPLY+=("$line")
    done < <(compgen "$@")
}

_vesk_cli_offer_ids() { _vesk_cli_offer "$1" _vesk_cli_first_column list; }
_vesk_cli_offer_projects() { _vesk_cli_offer "$1" _vesk_cli_first_column projects; }
_vesk_cli_offer_sections() { _vesk_cli_offer "$1" _vesk_cli_run sections; }

_vesk_cli()
{
    local cur=${COMP_WORDS[COMP_CWORD]}
    local prev=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()

    # The command, and the words after it that are not options or their values.
    local i word command="" skip=0
    local -a positional
    positional=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if ((skip)); then
            skip=0
            [[ $word == "=" ]] && skip=1
            continue
        fi
        case $word in
        --root | --project | --title | --body | --body-file | --set | --before | --into) skip=1 ;;
        -*) ;;
        *)
            if [[ -z $command ]]; then
                command=$word
            else
                positional+=("$word")
            fi
            ;;
        esac
    done

    # "--option=value": complete the value as after "--option value".
    if [[ $prev == "=" ]] && ((COMP_CWORD >= 2)); then
        prev=${COMP_WORDS[COMP_CWORD - 2]}
    elif [[ $cur == "=" ]]; then
        prev=${COMP_WORDS[COMP_CWORD - 1]}
        cur=""
    fi

    case $prev in
    --root)
        _vesk_cli_compgen -d -- "$cur"
        return
        ;;
    --body-file)
        _vesk_cli_compgen -f -- "$cur"
        [[ -z $cur || - == "$cur"* ]] && COMPREPLY+=(-)
        return
        ;;
    --title | --body) return ;;
    --project)
        _vesk_cli_offer_projects "$cur"
        return
        ;;
    --into)
        _vesk_cli_offer_sections "$cur"
        return
        ;;
    --before)
        if [[ $command == place-section ]]; then
            _vesk_cli_offer_sections "$cur"
        else
            _vesk_cli_offer_ids "$cur"
        fi
        return
        ;;
    --set)
        # The variables of the prompt being filled, as NAME=.
        if [[ ${#positional[@]} -gt 0 ]]; then
            local name
            while IFS= read -r name; do
                [[ -n $name && $name == "$cur"* ]] && COMPREPLY+=("$name=")
            done < <(_vesk_cli_run vars "$(_vesk_cli_dequote "${positional[0]}")")
            type compopt >/dev/null 2>&1 && compopt -o nospace
        fi
        return
        ;;
    esac

    if [[ -z $command ]]; then
        if [[ $cur == -* ]]; then
            _vesk_cli_compgen -W "--root --json --help -h" -- "$cur"
        else
            _vesk_cli_compgen -W "$_vesk_cli_commands" -- "$cur"
        fi
        return
    fi

    local options=""
    case $command in
    list) options="--project --pinned --json" ;;
    projects | sections | search | show | vars) options="--json" ;;
    fill) options="--set --json" ;;
    new) options="--project --title --body --body-file" ;;
    place) options="--before --into" ;;
    place-section) options="--before" ;;
    esac
    if [[ $cur == -* ]]; then
        _vesk_cli_compgen -W "$options" -- "$cur"
        return
    fi

    local n=${#positional[@]}
    case $command in
    show | vars | fill | pin | unpin | trash)
        ((n == 0)) && _vesk_cli_offer_ids "$cur"
        ;;
    move)
        if ((n == 0)); then
            _vesk_cli_offer_ids "$cur"
        elif ((n == 1)); then
            _vesk_cli_offer_projects "$cur"
        fi
        ;;
    project-rename | project-trash)
        ((n == 0)) && _vesk_cli_offer_projects "$cur"
        ;;
    place)
        _vesk_cli_offer_ids "$cur"
        ;;
    place-section)
        ((n == 0)) && _vesk_cli_offer_sections "$cur"
        ;;
    esac
}

complete -F _vesk_cli vesk-cli
