# Completes roxe's arguments in bash: the tool itself says what may come next.
_roxe() {
  local IFS=$'\n'
  COMPREPLY=($(compgen -W "$(roxe complete -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null | cut -f 1)" \
    -- "${COMP_WORDS[COMP_CWORD]}"))
}
complete -o bashdefault -o default -F _roxe roxe
