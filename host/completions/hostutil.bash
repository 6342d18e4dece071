# Bash completion for hostutil.

_hostutil() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} options=--help
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W "plist locate list inspect sample --help --version" -- "$word")
    return
  fi
  case $before in
    --layout)
      mapfile -t COMPREPLY < <(compgen -W "two-level flat" -- "$word")
      return ;;
    --match | --domain | --files)
      return ;;
  esac
  case ${COMP_WORDS[1]} in
    locate) options+=" --layout --create" ;;
    list) options+=" --match --domain --json" ;;
    inspect) options+=" --json" ;;
    sample) options+=" --files --layout" ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  elif [[ ${COMP_WORDS[1]} == plist ]]; then
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  else
    mapfile -t COMPREPLY < <(compgen -d -- "$word")
  fi
}

complete -o filenames -F _hostutil hostutil
