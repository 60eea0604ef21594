// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>

#include "tool/line/Arguments.h"
#include "tool/line/Completion.h"

namespace tool::line {

namespace {

// The scripts determine the words on the line, get the candidates for the last one from 'kraddon
// completion SHELL -- WORD...', and pass them to the shell, which quotes them. Nothing on the line
// is run.

constexpr std::string_view kBash = R"(# bash completion for kraddon

# The word $1 without its quotes, into REPLY, and a quote that is still open into 'quote'; nothing
# in the word is expanded or run.
_kraddon_unquote() {
  local word=$1 c next piece i
  REPLY= quote=
  for ((i = 0; i < ${#word}; i++)); do
    c=${word:i:1} next=${word:i+1:1}
    if [[ $quote == "'" ]]; then
      if [[ $c == "'" ]]; then quote=; else REPLY+=$c; fi
    elif [[ $c == '\' ]]; then
      if [[ $quote == '"' && $next != [\"\\\$\`] ]]; then REPLY+=$c; continue; fi
      REPLY+=$next i=$((i + 1))
    elif [[ $c == '"' ]]; then
      if [[ $quote ]]; then quote=; else quote='"'; fi
    elif [[ ! $quote && $c == "'" ]]; then
      quote="'"
    elif [[ ! $quote && $c$next == "\$'" ]]; then
      piece=
      for ((i += 2; i < ${#word}; i++)); do
        c=${word:i:1}
        [[ $c == "'" ]] && break
        piece+=$c
        [[ $c == '\' ]] && i=$((i + 1)) && piece+=${word:i:1}
      done
      printf -v piece %b "${piece//"\'"/"'"}"
      REPLY+=$piece
    else
      REPLY+=$c
    fi
  done
}

# bash takes words apart at '=' and ':' too. This puts them together again: the words before the
# cursor into 'typed', and into 'parted' what of the last one bash leaves alone.
_kraddon_words() {
  local rest=${COMP_LINE:0:COMP_POINT} word previous= i
  typed=() parted=
  rest=${rest#*"${COMP_WORDS[0]}"}
  for ((i = 1; i <= COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if ((i == COMP_CWORD)) && [[ $COMP_LINE && $rest != *"$word"* ]]; then
      word=${rest#"${rest%%[![:blank:]]*}"}
    fi
    if ((i > 1)) && [[ $rest != [[:blank:]]* && $previous$word == *[=:]* &&
        ($previous == *[=:] || $word == [=:]*) ]]; then
      parted=${typed[-1]}
      typed[-1]+=$word
    else
      parted=
      typed+=("$word")
    fi
    [[ $word == [=:]* ]] && parted=${typed[-1]}
    rest=${rest#*"$word"}
    previous=$word
  done
}

# The words of COMPREPLY as the shell reads them, in the quote that is open.
_kraddon_quote() {
  local i word
  for i in "${!COMPREPLY[@]}"; do
    word=${COMPREPLY[i]}
    case $quote in
      "'") word=${word//"'"/"'\''"} ;;
      '"') word=${word//'\'/'\\'} word=${word//'"'/'\"'} word=${word//'$'/'\$'}
        word=${word//'`'/'\`'} ;;
      *) printf -v word %q "$word"
        [[ $word != '\~/'* ]] || word=${word#?} ;;
    esac
    COMPREPLY[i]=$word
  done
}

_kraddon() {
  local IFS=$' \t\n' REPLY quote parted word current candidate has_end=1 has_dollar= program open kind= i
  local -a typed words=() records=() found
  COMPREPLY=()
  _kraddon_words
  for word in "${typed[@]}"; do
    _kraddon_unquote "$word"
    words+=("$REPLY")
  done
  current=$REPLY open=$quote
  _kraddon_unquote "$parted"
  parted=${#REPLY}
  _kraddon_unquote "${COMP_WORDS[0]}"
  program=${REPLY/#'~/'/"$HOME/"}

  while
    found=()
    mapfile -d '' -t records < <(command "$program" completion bash -- "${words[@]}" 2> /dev/null)
    for candidate in "${records[@]:2}"; do
      [[ ${records[0]} == paths ]] || candidate=${candidate%%$'\t'*}
      candidate=${records[1]}$candidate
      [[ $candidate == "$current"* ]] && found+=("$candidate")
    done
    ((${#found[@]}))
  do
    COMPREPLY=() kind=${records[0]}
    for candidate in "${found[@]}"; do COMPREPLY+=("${candidate:parted}"); done
    # bash closes the quote behind the only candidate. Of a folder, what is in it comes at once.
    [[ $open && $kind == paths && ${#found[@]} == 1 && $candidate == */ ]] || break
    words[-1]=$candidate current=$candidate
  done
  ((${#COMPREPLY[@]})) || return 0
  for candidate in "${COMPREPLY[@]}"; do
    [[ $candidate == *[/=] ]] || has_end=
    [[ $candidate == *[\$\`~]* ]] && has_dollar=1
  done
  [[ $has_end ]] && compopt -o nospace 2> /dev/null
  [[ $kind == paths ]] || return 0
  # bash quotes paths well, but for those with what looks like an expansion in them.
  if [[ $has_dollar ]]; then
    quote=$open
    _kraddon_quote
    return 0
  fi
  # It also adds the slash to folders on disk.
  for i in "${!COMPREPLY[@]}"; do
    [[ ${COMPREPLY[i]} == */ && -d ${COMPREPLY[i]} ]] && COMPREPLY[i]=${COMPREPLY[i]%/}
  done
  compopt -o filenames 2> /dev/null
  return 0
}

complete -F _kraddon kraddon
)";

constexpr std::string_view kZsh = R"(#compdef kraddon
# zsh completion for kraddon

_kraddon() {
  emulate -L zsh
  setopt extended_glob
  local -a records typed files folders
  local current=$PREFIX program=${(Q)words[1]} kind prefix ret=1
  [[ -n ${compstate[quote]} ]] || current=${(Q)PREFIX}
  program=${program/#\~\//$HOME/}
  typed=("${(@Q)words[2,CURRENT-1]}")
  records=("${(@0)$(command $program completion zsh -- "${typed[@]}" "$current" 2> /dev/null)}")
  (( ${#records} > 3 )) || return 1
  kind=$records[1] prefix=$records[2]
  # The last one is what follows the last NUL: nothing.
  records=("${(@)records[3,-2]}")
  [[ -z $prefix ]] || compset -p ${#prefix}

  if [[ $kind == paths ]]; then
    compset -P '*/'
    folders=(${(@M)records:#*/})
    files=(${(@)records:#*/})
    folders=(${(@)${(@)folders%/}##*/})
    files=(${(@)files##*/})
    (( ${#files} )) && compadd -- "${files[@]}" && ret=0
    (( ${#folders} )) && compadd -q -S / -- "${folders[@]}" && ret=0
    return ret
  fi

  local -a plain described
  plain=(${(@M)records:#*=})
  described=(${(@)${(@)records:#*=}/$'\t'/:})
  (( ${#plain} )) && compadd -S '' -- "${plain[@]}" && ret=0
  (( ${#described} )) && _describe -o -t values kraddon described && ret=0
  return ret
}

if [[ $funcstack[1] == _kraddon ]]; then
  _kraddon "$@"
else
  compdef _kraddon kraddon
fi
)";

constexpr std::string_view kFish = R"(# fish completion for kraddon

function __kraddon_candidates
    set -l typed (commandline --tokenize --cut-at-cursor --current-process)
    set -l raw (commandline --cut-at-cursor --current-token | string collect --allow-empty)
    set -l current
    # A quote may still be open.
    for closing in '' \' '"'
        set current (string unescape -- "$raw$closing" | string collect --allow-empty)
        test $pipestatus[1] -eq 0 -o -z "$raw"; and break
    end
    set -l program $typed[1]
    string match --quiet '~/*' -- $program; and set program $HOME(string sub --start 2 -- $program)
    set -l records (command $program completion fish -- $typed[2..] "$current" 2>/dev/null | string split0)
    set -q records[3]; or return
    if test -z "$records[2]"
        string join0 -- $records[3..]
    else
        for candidate in $records[3..]
            printf '%s%s\0' $records[2] $candidate
        end
    end
end

complete --command kraddon --no-files --arguments '(__kraddon_candidates | string split0)'
)";

}  // namespace

std::vector<std::string> completionShells() {
  return {"bash", "zsh", "fish"};
}

std::string_view completionScript(std::string_view shell) {
  if (shell == "bash") return kBash;
  if (shell == "zsh") return kZsh;
  if (shell == "fish") return kFish;
  refuseValue("SHELL", shell, completionShells());
}

}  // namespace tool::line
