// `marrowby completion bash|zsh`: the shell completion scripts, printed so that one command
// installs them (see the README).
#include "Commands.h"

namespace wren {

namespace {

// Action class names come from the installed package itself, so they never go stale.
constexpr const char* kBashScript = R"BASH(# bash completion for marrowby
_marrowby_classes() {
  marrowby actions --json 2>/dev/null | sed -n 's/.*"class": *"\([^"]*\)".*/\1/p'
}

_marrowby() {
  local cur prev words cword
  _init_completion 2>/dev/null || {
    cur="${COMP_WORDS[COMP_CWORD]}"; prev="${COMP_WORDS[COMP_CWORD-1]}"
    words=("${COMP_WORDS[@]}"); cword=$COMP_CWORD
  }
  local commands="run validate actions describe frameworks options setup-mono new add set remove move edit completion help"
  local globals="--registry --options --module --help --version"
  case "$prev" in
    --port) return ;;
    --registry|--options|--module|--log|--junit|--dir)
      COMPREPLY=($(compgen -f -- "$cur")); return ;;
  esac
  local cmd="" i
  for ((i = 1; i < cword; i++)); do
    case "${words[i]}" in
      --registry|--options|--module) ((i++)) ;;
      -*) ;;
      *) cmd="${words[i]}"; break ;;
    esac
  done
  if [[ -z "$cmd" ]]; then
    COMPREPLY=($(compgen -W "$commands $globals" -- "$cur")); return
  fi
  local opts="--help"
  case "$cmd" in
    run) opts="--var --dry-run --log --json --junit --help" ;;
    validate|actions|frameworks|options) opts="--json --help" ;;
    describe) opts="--json --help" ;;
    add) opts="--description --help" ;;
    setup-mono) opts="--dir --help" ;;
    edit) opts="--port --no-browser --help" ;;
  esac
  if [[ "$cur" == -* ]]; then
    COMPREPLY=($(compgen -W "$opts" -- "$cur")); return
  fi
  case "$cmd" in
    help) COMPREPLY=($(compgen -W "$commands" -- "$cur")) ;;
    completion) COMPREPLY=($(compgen -W "bash zsh" -- "$cur")) ;;
    describe) COMPREPLY=($(compgen -W "$(_marrowby_classes)" -- "$cur")) ;;
    add)
      if [[ "$prev" == *.mbproj ]]; then
        COMPREPLY=($(compgen -W "$(_marrowby_classes)" -- "$cur"))
      else
        COMPREPLY=($(compgen -f -X '!*.mbproj' -- "$cur") $(compgen -d -- "$cur"))
      fi ;;
    options) COMPREPLY=($(compgen -W "set" -- "$cur")) ;;
    *) COMPREPLY=($(compgen -f -X '!*.mbproj' -- "$cur") $(compgen -d -- "$cur")) ;;
  esac
}
complete -F _marrowby marrowby
)BASH";

constexpr const char* kZshScript = R"ZSH(#compdef marrowby
# zsh completion for marrowby

_marrowby_classes() {
  local -a classes
  classes=(${(f)"$(marrowby actions --json 2>/dev/null | sed -n 's/.*"class": *"\([^"]*\)".*/\1/p')"})
  _describe 'action class' classes
}

_marrowby() {
  local -a commands
  commands=(
    'run:run a build project'
    'validate:check a build project without running it'
    'actions:list the registered actions by category'
    'describe:show an action class'"'"'s properties'
    'frameworks:list the detected .NET frameworks'
    'options:show options, or: options set KEY NAME VALUE'
    'setup-mono:build a registry hive from the local Mono'
    'new:write an empty build project'
    'add:append a step'
    'set:set a step'"'"'s property'
    'remove:remove a step'
    'move:move a step'
    'edit:edit a build project in the browser'
    'completion:print the bash or zsh completion script'
    'help:show the help of marrowby or of a command'
  )
  _arguments -C \
    '--registry[registry hive (.reg) to read]:file:_files' \
    '--options[user options file]:file:_files' \
    '--module[package module to load]:file:_files' \
    '(- *)--help[show help]' \
    '(- *)--version[show the version]' \
    '1:command:->command' \
    '*::arg:->args'
  case $state in
    command) _describe 'command' commands ;;
    args)
      case $words[1] in
        run) _arguments '*--var[NAME=VALUE]:variable:' '--dry-run[run nothing]' \
               '--log[build log]:file:_files' '--json[JSON events]' \
               '--junit[JUnit report]:file:_files' '1:project:_files -g "*.mbproj"' ;;
        validate) _arguments '--json[JSON output]' '1:project:_files -g "*.mbproj"' ;;
        actions|frameworks) _arguments '--json[JSON output]' ;;
        options) _arguments '--json[JSON output]' '1:action:(set)' ;;
        describe) _arguments '--json[JSON output]' '1:class:_marrowby_classes' ;;
        new|set|remove|move) _arguments '1:project:_files -g "*.mbproj"' ;;
        add) _arguments '--description[the step'"'"'s description]:text:' \
               '1:project:_files -g "*.mbproj"' '2:class:_marrowby_classes' ;;
        edit) _arguments '--port[port on 127.0.0.1]:port:' '--no-browser[do not open a browser]' \
               '1:project:_files -g "*.mbproj"' ;;
        setup-mono) _arguments '--dir[where to build it]:folder:_files -/' ;;
        completion) _arguments '1:shell:(bash zsh)' ;;
        help) _describe 'command' commands ;;
      esac ;;
  esac
}

_marrowby "$@"
)ZSH";

}  // namespace

int CmdCompletion(TCliContext& ctx, const std::string& shell) {
  if (shell == "bash") {
    *ctx.out << kBashScript;
    return kExitOk;
  }
  if (shell == "zsh") {
    *ctx.out << kZshScript;
    return kExitOk;
  }
  *ctx.err << "marrowby: completion scripts exist for bash and zsh, not '" << shell << "'\n";
  return kExitUsage;
}

}  // namespace wren
