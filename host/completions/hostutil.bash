# Bash completion for hostutil. Commands and options are taken from the program's own help.

_hostutil() {
  local word=${COMP_WORDS[COMP_CWORD]} program=${COMP_WORDS[0]} words
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    words=$("$program" --help 2>/dev/null | sed -n 's/^  \([a-z]\{1,\}\)  .*/\1/p')
    mapfile -t COMPREPLY < <(compgen -W "$words --help --version" -- "$word")
    return
  fi
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    --layout)
      mapfile -t COMPREPLY < <(compgen -W "two-level flat" -- "$word")
      return ;;
    --html)
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return ;;
    --match | --domain | --files | --jobs)
      return ;;
  esac
  if [[ $word == -* ]]; then
    words=$("$program" "${COMP_WORDS[1]}" --help 2>/dev/null | sed -n 's/^  \(-h, \)\{0,1\}\(--[a-z-]*\).*/\2/p')
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
  elif [[ ${COMP_WORDS[1]} == plist ]]; then
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  else
    mapfile -t COMPREPLY < <(compgen -d -- "$word")
  fi
}

complete -o filenames -F _hostutil hostutil
