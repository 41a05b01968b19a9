# shellcheck shell=bash
# Completion of ipodctl for bash: source this file, or install it as
# /usr/share/bash-completion/completions/ipodctl.

_ipodctl_lists="artists albums playlists genres tracks podcasts audiobooks composers"
_ipodctl_models="classic nano video mini touch strict hasty"

# Prints the options of a command.
_ipodctl_options() {
  local common="--help --json --url --token-file --verbose"
  case $1 in
    status | info) echo "$common --format --device --log" ;;
    watch) echo "$common --format --lines" ;;
    ls) echo "$common --format --device --log --offset --count --all" ;;
    play) echo "$common --hold --device --log" ;;
    shuffle | repeat) echo "$common --device --log" ;;
    pause | next | prev) echo "$common" ;;
    logo) echo "$common --output --preview --model --remove" ;;
    doctor) echo "--help --device --trace --probe --yes" ;;
    serve) echo "--help --port --listen --token-file --control --device --logo --page --open" \
                "--mpris --quiet" ;;
    *) echo "--help --version" ;;
  esac
}

# Prints what can follow a path: a type after an index, and nothing more after an entry of tracks.
_ipodctl_paths() {
  local typed=$1 above
  if [[ $typed != */* ]]; then
    echo "$_ipodctl_lists"
    return
  fi
  above=${typed%/*}
  [[ ${above##*/} =~ ^([0-9]+|all)$ ]] || return
  printf "$above/%s\n" artists albums tracks all-tracks
}

# Prints the words that can be at the place of the cursor.
_ipodctl_words() {
  local command=$1 previous=$2 current=$3 place=$4
  case $previous in
    --model) echo "$_ipodctl_models"; return ;;
    --format | --url | --offset | --count | --lines | --port | --listen) return ;;
  esac
  if [[ -z $command ]]; then
    echo "doctor serve status info watch ls play pause next prev shuffle repeat logo --help --version"
  elif [[ $current == -* ]]; then
    _ipodctl_options "$command"
  elif ((place == 2)); then
    case $command in
      ls | play) _ipodctl_paths "$current" ;;
      shuffle) echo "off tracks albums" ;;
      repeat) echo "off track all" ;;
    esac
  fi
}

_ipodctl() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=""
  ((COMP_CWORD > 1)) && command=${COMP_WORDS[1]}
  COMPREPLY=()
  case $previous in
    --device | --token-file | --log | --trace | --control | --output | -o | --preview | --page)
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      return
      ;;
  esac
  if [[ $current != -* && ($command == logo || $previous == --logo) ]]; then
    [[ $previous == --model ]] || mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
  local words
  words=$(_ipodctl_words "$command" "$previous" "$current" "$COMP_CWORD")
  mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -F _ipodctl ipodctl
