# Completes the commands of ormel-tuning, and their options as the tool's own help has them.
_ormel_tuning() {
    local word=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]-} words
    if ((COMP_CWORD == 1)) || [[ $command == help ]]; then
        words=$(ormel-tuning help 2>/dev/null | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
    elif [[ $word == -* ]]; then
        words=$(ormel-tuning help "$command" 2>/dev/null |
            sed -n '/^  -/{s/^  \([^ ]*\).*/\1/;s/,/ /g;p;}')
    else
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _ormel_tuning ormel-tuning
