# Bash completion of vintrel: commands, options, and their values.
#
# Words that never change stand here, so that a key press does not wait for the tool; the names of presets and
# parameters come from the tool itself.
# shellcheck shell=bash disable=SC2016  # the dollars are awk's

# Puts those of the words $2... that begin with $1 into COMPREPLY.
_vintrel_words() {
  local IFS=$' \t\n'
  mapfile -t COMPREPLY < <(compgen -W "${*:2}" -- "$1")
}

# The columns of `vintrel params` through an awk program; asked for once in a shell.
_vintrel_params() {
  [[ -n ${_vintrel_params_table:-} ]] || _vintrel_params_table=$("$1" params 2>/dev/null)
  awk -F '  +' "NR > 1 { $2 }" <<<"$_vintrel_params_table"
}

# What $3 may become as the value of option $2.
_vintrel_value() {
  local tool=$1 option=$2 value=$3
  case $option in
    -i | --input | -o | --output) compopt -o default ;;
    --scene | --save-scene)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -d -- "$value"; compgen -f -X '!*.toml' -- "$value")
      ;;
    --preset)
      compopt -o filenames
      _vintrel_words "$value" "$("$tool" presets 2>/dev/null | awk '{ print $1 }')"
      mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -f -X '!*.toml' -- "$value")
      ;;
    --set)
      if [[ $value == *=* ]]; then
        _vintrel_words "$value" "$(_vintrel_params "$tool" '
          if ($4 == "checkbox") print $3 "=on", $3 "=off"
          if ($4 == "popup") { gsub(" or ", " " $3 "=", $5); print $3 "=" $5 }')"
      else
        compopt -o nospace
        _vintrel_words "$value" "$(_vintrel_params "$tool" 'print $3 "="')"
      fi
      ;;
    --key)
      compopt -o nospace
      _vintrel_words "$value" "$(_vintrel_params "$tool" 'if ($7 ~ /^yes/) print $3 "@"')"
      ;;
    --blank) _vintrel_words "$value" 1280x720 1920x1080 2048x1080 3840x2160 4096x2160 ;;
    -r | --fps) _vintrel_words "$value" 23.976 24 25 29.97 30 50 59.94 60 ;;
    --depth) _vintrel_words "$value" 8 16 half float ;;
    --alpha) _vintrel_words "$value" straight premultiplied ;;
    --compression) _vintrel_words "$value" none rle zip zips packbits lzw piz pxr24 b44 b44a dwaa dwab ;;
    --codec) _vintrel_words "$value" h264 hevc prores ffv1 ;;
    --sound) _vintrel_words "$value" auto copy aac none ;;
    --proxy) _vintrel_words "$value" 2 4 ;;
    --levels) _vintrel_words "$value" 1 1-8 9,10 ;;
    --against) compopt -o default ;;
    --missing) _vintrel_words "$value" error skip black ;;
    --progress) _vintrel_words "$value" text json ;;
  esac
}

_vintrel() {
  local commands='render sheet panel info presets params check about'
  local flags='--help --only-snow --retime --keep-going --no-overwrite --overwrite --quiet -h -q -y'
  local values='--input --blank --output --scene --preset --set --key --seed --frames --fps --shutter --depth --alpha
    --compression --quality --proxy --pixel-aspect --jobs --missing --progress -i -o -r'
  local render_flags='--resume --dry-run' render_values='--codec --sound --part --save-scene'
  local sheet_values='--count'
  local IFS=$' \t\n'

  # Words as they were typed: readline breaks them at = and @ too.
  local -a typed
  read -ra typed <<<"${COMP_LINE:0:COMP_POINT}"
  [[ ${COMP_LINE:0:COMP_POINT} != *[[:blank:]] ]] || typed+=('')
  local tool=${1/#\~/$HOME} command=${typed[1]:-} current=${typed[-1]} option=${typed[-2]} begin=''
  case $command in
    render) flags+=" $render_flags" values+=" $render_values" ;;
    sheet) values+=" $sheet_values" ;;
    panel) flags='--help -h --no-browser' values='--scene --port' ;;
    info) flags='--help -h --json' values='' ;;
    check) flags='--help -h --quick --json' values='--levels --seed --against --jobs' ;;
    *) flags='--help -h' values='' ;;
  esac
  if [[ $current == --*=* ]]; then  # --preset=NAME
    option=${current%%=*} begin=$option=
  fi

  COMPREPLY=()
  if ((${#typed[@]} == 2)); then
    _vintrel_words "$current" "$commands --help --version -h"
  elif [[ " ${values//$'\n'/ } " == *" $option "* ]]; then
    _vintrel_value "$tool" "$option" "${current#"$begin"}"
  elif [[ $current == -* ]]; then
    _vintrel_words "$current" "$flags $values"
  elif [[ $command == render || $command == sheet || $command == panel || $command == info || $command == check ]]; then
    compopt -o default
  fi

  # Readline puts the answers in place of what follows the last break alone.
  local breaks=${COMP_WORDBREAKS//[^=@:]/} broken=''
  [[ -z $breaks ]] || broken=${current%"${current##*["$breaks"]}"}
  COMPREPLY=("${COMPREPLY[@]/#/$begin}")
  COMPREPLY=("${COMPREPLY[@]#"$broken"}")
}

complete -F _vintrel vintrel
