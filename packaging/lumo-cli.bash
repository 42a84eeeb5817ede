# SPDX-License-Identifier: GPL-3.0-or-later
# Completion of lumo-cli for bash. What it offers comes from the program's own help texts.

_lumo_cli() {
  local word=${COMP_WORDS[COMP_CWORD]} command= i
  COMPREPLY=()
  for ((i = 1; i < COMP_CWORD; i++)); do
    [[ ${COMP_WORDS[i]} == -* ]] || { command=${COMP_WORDS[i]}; break; }
  done
  if [[ -z $command ]]; then
    COMPREPLY=($(compgen -W "--help --version $("${COMP_WORDS[0]}" --help 2>/dev/null |
      awk 'found && NF { print $1 } /^Subcommands:/ { found = 1 }')" -- "$word"))
  elif [[ $word == -* ]]; then
    COMPREPLY=($(compgen -W "$("${COMP_WORDS[0]}" "$command" --help 2>/dev/null |
      grep -oE '^ +(-[a-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+')" -- "$word"))
  else
    compopt -o default
  fi
}
complete -F _lumo_cli lumo-cli
