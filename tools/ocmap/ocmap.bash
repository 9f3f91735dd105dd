# Completion of ocmap's command line for bash. It needs no functions but bash's own.

# Directories, and the files that match one of the patterns behind the word.
_ocmap_files() {
    local word=$1 pattern
    shift
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(
        compgen -d -- "$word"
        for pattern; do compgen -f -X "!$pattern" -- "$word"; done
    )
}

_ocmap_words() {
    local word=$1
    shift
    mapfile -t COMPREPLY < <(compgen -W "$*" -- "$word")
}

_ocmap() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command='' at
    COMPREPLY=()
    if [[ $word == = ]]; then # --option=value comes in three words
        word=''
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi

    case $before in
        --kind) _ocmap_words "$word" edit get get-config; return ;;
        --store | --yang) _ocmap_files "$word"; return ;;
        --html) _ocmap_files "$word" '*.html'; return ;;
        --oper) _ocmap_files "$word" '*.xml' '*.json'; return ;;
        --plugin) _ocmap_files "$word" '*.so'; return ;;
        --wait) return ;; # a number
    esac

    for ((at = 1; at < COMP_CWORD; ++at)); do
        if [[ ${COMP_WORDS[at]} != -* ]]; then
            command=${COMP_WORDS[at]}
            break
        fi
    done

    local plain='--plugin --yang --help' options
    local watched="$plain --trace --journal --journal-all"
    case $command in
        '') options='--version --help' ;;
        forward) options="$watched --kind --json --bare --check" ;;
        reverse) options="$watched --kind --json --bare" ;;
        edit) options="$watched --store --wait --dry-run --json" ;;
        get) options="$watched --store --oper --json --bare" ;;
        get-config) options="$watched --store --json --bare" ;;
        explain) options="$watched --reverse --kind --html --store" ;;
        tree) options="$plain --markdown" ;;
        deviations) options=$plain ;;
        *) return ;;
    esac

    if [[ $word == -* || $command == tree || $command == deviations ]]; then
        _ocmap_words "$word" "$options"
    elif [[ -z $command ]]; then
        _ocmap_words "$word" forward reverse edit get get-config explain tree deviations
    else
        _ocmap_files "$word" '*.xml' '*.json'
    fi
}

complete -F _ocmap ocmap
