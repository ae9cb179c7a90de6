# bash completion for nodal. Commands and options come from nodal --help, paths from nodal ls.
#
# Anyone may have chosen the names in a tree. The functions never expand them, and suggest them quoted.

# Splits a line at blanks into "typed". Removes quotes and backslashes as the shell does, but expands nothing. Sets "raw"
# to the last word as typed, and "quote" to the quote that is open at its end.
_nodal_split() {
  local line=$1 word='' char i start=-1
  typed=() quote=''
  for ((i = 0; i < ${#line}; i++)); do
    char=${line:i:1}
    if [[ -z $quote && $char == [[:blank:]] ]]; then
      ((start >= 0)) && typed+=("$word")
      start=-1 word=''
      continue
    fi
    ((start >= 0)) || start=$i
    case $quote$char in
      \' | \") quote=$char ;;
      "''" | '""') quote='' ;;
      \\ | '"\')
        ((++i))
        char=${line:i:1}
        # Between double quotes, a backslash quotes only these characters.
        [[ -n $quote && $char != [\"\$\`\\] ]] && word+='\'
        word+=$char
        ;;
      *) word+=$char ;;
    esac
  done
  typed+=("$word")
  ((start >= 0)) || start=${#line}
  raw=${line:start}
}

# Sets "kept" to the part of the last word that readline keeps. Readline replaces only $1, the text after the last colon
# or equals sign.
_nodal_find_kept() {
  local text=$raw typed raw quote
  kept=''
  [[ $text == *"$1" ]] || return
  _nodal_split "${text%"$1"}"
  kept=${typed[-1]}
}

# Suggests the lines of $1 that start with the typed word.
_nodal_offer() {
  local line
  while IFS= read -r line; do
    [[ $line == "$word"* ]] && COMPREPLY+=("${line#"$kept"}")
  done <<<"$1"
}

# Sets "quoted" to the text, quoted as the open quote before the cursor requires.
_nodal_quote() {
  local text=$1 char i
  quoted=''
  for ((i = 0; i < ${#text}; i++)); do
    char=${text:i:1}
    case "$quote $char" in
      "' '") quoted+="'\\''" ;;
      # Between double quotes, the shell expands an exclamation mark even after a backslash.
      '" !') quoted+='"\!"' ;;
      "' "* | '" '[!\"\$\`\\] | ' '[[:alnum:]_./%@+-] | ' '[![:ascii:]]) quoted+=$char ;;
      *) quoted+=\\$char ;;
    esac
  done
}

# Suggests the entries below the typed path.
_nodal_offer_paths() {
  local parent=/ name
  [[ $word == */* ]] && parent=${word%/*}/
  [[ $parent == /* ]] || return
  local quoted
  compopt -o nospace
  while IFS= read -r name; do
    name=$parent$name
    [[ $name == "$word"* && $name != *[[:cntrl:]]* ]] || continue
    _nodal_quote "${name#"$kept"}"
    COMPREPLY+=("$quoted")
  done < <("$program" "${tree[@]}" ls "$parent" 2>/dev/null)
}

_nodal() {
  local typed raw quote kept i
  _nodal_split "${COMP_LINE:0:COMP_POINT}"
  _nodal_find_kept "$2"
  local last=$((${#typed[@]} - 1))
  local word=${typed[last]}

  # Find the command, the source of the tree, and the option whose argument is being completed.
  local program=${typed[0]/#'~'/$HOME} command='' option='' tree=()
  local help=$("$program" --help 2>/dev/null)
  for ((i = 1; i < last; i++)); do
    if [[ -n $option ]]; then
      [[ $option == --cache || $option == --root ]] && tree=("$option" "${typed[i]}")
      option=''
    elif [[ ${typed[i]} == --cache=* || ${typed[i]} == --root=* ]]; then
      tree=("${typed[i]}")
    elif [[ ${typed[i]} == -* ]]; then
      # In the help, an option with an argument is followed by the type of the argument.
      [[ $help =~ ($'\n  '|,)"${typed[i]}"(,[^ ]*)?' '[A-Z][A-Z] ]] && option=${typed[i]}
    elif [[ -z $command ]]; then
      command=${typed[i]}
      help+=$'\n'$("$program" "$command" --help 2>/dev/null)
    fi
  done

  COMPREPLY=()
  case $option in
    --only) _nodal_offer_paths ;;
    -*) compopt -o default ;;  # complete file names
    *)
      if [[ $word == --*=* ]]; then
        compopt -o default
      elif [[ $word == -* ]]; then
        _nodal_offer "$(sed -n 's/^  \(-[^ ]*\).*/\1/p' <<<"$help" | tr , '\n')"
      elif [[ -z $command ]]; then
        _nodal_offer "$(sed '1,/^Commands:/d' <<<"$help" | sed -n 's/^  \([a-z][^ ]*\) .*/\1/p')"
      elif [[ $help == *$'\n  path '* ]]; then
        _nodal_offer_paths
      else
        compopt -o default
      fi
      ;;
  esac
}

complete -F _nodal nodal
