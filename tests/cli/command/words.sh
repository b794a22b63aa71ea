#!/bin/bash
# The man page and the completions of bash, zsh and fish know the commands and options that the tool's own help lists, and no others.
# usage: words.sh TOOL SOURCE_FOLDER
set -eu
tool="$1"
source="$2"
completion="$2/cli/command/completion.bash"
page="$2/docs/vintrel.1"

# In the help a line of each begins with two blanks: "  -o,--output FILE   ...", "  render   ...".
CommandsOfHelp() { "$tool" --help | sed -nE '/^Subcommands:/,$s/^  ([a-z]+) .*/\1/p'; }
OptionsOfHelp() { "$tool" "$@" --help | sed -nE 's/^  (-[^ ]+).*/\1/p' | tr , '\n'; }

# What may follow what has been typed so far.
# shellcheck source=/dev/null
source "$completion"
Completions() {
  COMP_LINE="$*" COMP_POINT=${#COMP_LINE}
  _vintrel "$tool"
  printf '%s\n' "${COMPREPLY[@]}"
}

# The same of zsh, whose helpers print here what they are told; and of fish, which knows how to ask.
OptionsOfZsh() {
  zsh -fc '
    _arguments() { print -l -- "$@" }
    _describe() { print -l -- "${(P@)2}" }
    source "$1"
    words=(vintrel ${=2}) CURRENT=$(($#words < 2 ? 2 : $#words)) PREFIX=$words[-1]
    _vintrel' zsh "$2/cli/command/completion.zsh" "$1" | sed -nE 's/^(\([^)]*\))?\*?(-[a-z-]+)\[.*/\2/p; s/^([a-z]+):.*/\1/p'
}
OptionsOfFish() {
  fish --no-config -c 'source $argv[1]; complete -C $argv[2]' "$2/cli/command/completion.fish" "$1" | cut -f 1
}

# What may stand after an option: by zsh's helper of that option ($2), which its stub calls, and by fish.
ValuesOfZsh() {
  zsh -fc '
    _arguments() { $helper }
    _files() { }
    compadd() { print -l -- "${(P@)argv[-1]}" }
    source "$1"
    helper=$2 PREFIX=$4 words=("$5" render $3 "$4") CURRENT=4
    _vintrel' zsh "$source/cli/command/completion.zsh" "$2" "$1" "$3" "$tool"
}
ValuesOfFish() { PATH="$(dirname "$tool"):$PATH" OptionsOfFish "vintrel render $1 $2" "$source"; }

# In the page ".It Fl o , -output Ar file" stands for -o and --output, ".It Cm render" for a command.
CommandsOfPage() { sed -nE '/^\.Sh DESCRIPTION/,/^\.Ss/s/^\.It Cm ([a-z]+).*/\1/p' "$page"; }
OptionsOfPage() {
  sed -nE 's/^\.It Fl ([a-z]) , (-[a-z-]+).*/-\1\n-\2/p; t; s/^\.It Fl (-[a-z-]+).*/-\1/p' "$page"
}

failed=0
ExpectSame() {
  local difference
  if ! difference=$(diff <(sort -u <<<"$2") <(sort -u <<<"$3")); then
    echo "$1 (<) and the help (>) differ:" >&2
    grep '^[<>]' <<<"$difference" >&2
    failed=1
  fi
}

commands=$(CommandsOfHelp)
every=$(OptionsOfHelp)
[ "$(wc -w <<<"$commands")" -ge 6 ] || { echo "the help lists no commands that this test can read" >&2 && exit 1; }
ExpectSame "completion" "$(Completions 'vintrel ' | grep -v '^-')" "$commands"
ExpectSame "completion of no command" "$(Completions 'vintrel -')" "$every"
ExpectSame "man page" "$(CommandsOfPage)" "$commands"
shells=""
for shell in zsh fish; do
  command -v "$shell" >/dev/null && shells+=" $shell" || echo "$shell is not there; its completion is not checked"
done
if [[ $shells == *zsh* ]]; then
  ExpectSame "zsh" "$(OptionsOfZsh '' "$2" || true)" "$commands"
fi
for command in $commands; do
  options=$(OptionsOfHelp "$command")
  ExpectSame "completion of $command" "$(Completions "vintrel $command -")" "$options"
  every+=$'\n'$options
  [[ $shells != *zsh* ]] || ExpectSame "zsh of $command" "$(OptionsOfZsh "$command -" "$2")" "$options"
  [[ $shells != *fish* ]] || ExpectSame "fish of $command" "$(OptionsOfFish "vintrel $command -" "$2")" "$options"
done
ExpectSame "man page" "$(OptionsOfPage)" "$every"

# The names that the tool itself knows, and no others.
presets=$("$tool" presets | awk '{ print $1 }')
modes=$'transfer-mode=Composite\ntransfer-mode=Lighten'
ExpectSame "completion of --set" "$(Completions 'vintrel render --set transfer-mode=' | sed 's/^/transfer-mode=/')" "$modes"
if [[ $shells == *zsh* ]]; then
  ExpectSame "zsh of --preset" "$(ValuesOfZsh --preset _vintrel_presets '')" "$presets"
  ExpectSame "zsh of --set" "$(ValuesOfZsh --set _vintrel_set transfer-mode= | grep '^transfer')" "$modes"
fi
if [[ $shells == *fish* ]]; then
  ExpectSame "fish of --set" "$(ValuesOfFish --set transfer-mode=)" $'transfer-mode=\n'"$modes"
fi
exit $failed
