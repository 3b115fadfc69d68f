#compdef ormel-tuning
# Completes the commands of ormel-tuning, and their options as the tool's own help has them.
local -a words_of_help
if ((CURRENT == 2)) || [[ $words[2] == help ]]; then
    words_of_help=(${(f)"$(ormel-tuning help 2>/dev/null |
        sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\)  *\(.*\)/\1:\2/p')"})
    _describe command words_of_help
elif [[ $PREFIX == -* ]]; then
    words_of_help=(${=${(f)"$(ormel-tuning help $words[2] 2>/dev/null |
        sed -n '/^  -/{s/^  \([^ ]*\).*/\1/;s/,/ /g;p;}')"}})
    compadd -- $words_of_help
else
    _files
fi
