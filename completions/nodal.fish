# fish completion for nodal. Commands and options come from nodal --help, paths from nodal ls.

# Prints the entries below a typed path. fish quotes them. The parameters are the program, the path, and the options
# that select the source.
function __nodal_paths
    set -l parent (string unescape -- $argv[2] | string match -r '^/.*/'; or echo /)
    set -l names ($argv[1] $argv[3..-1] ls $parent 2>/dev/null)
    printf '%s\n' $parent$names
end

function __nodal_complete
    set -l word (commandline -ct)
    set -l tokens (commandline -opc)
    set -l program $tokens[1]

    # Find the command, the source of the tree, and the option whose argument is being completed.
    set -l help ($program --help 2>/dev/null)
    set -l command ''
    set -l option ''
    set -l tree
    for token in $tokens[2..-1]
        if test -n "$option"
            contains -- $option --cache --root
            and set tree $option $token
            set option ''
        else if string match -qr -- '^--(cache|root)=' $token
            set tree $token
        else if string match -q -- '-*' $token
            # In the help, an option with an argument is followed by the type of the argument.
            string match -qr -- "^  (-[^ ]*,)?$token(,[^ ]*)? [A-Z][A-Z]" $help
            and set option $token
        else if test -z "$command"
            set command $token
            set -a help ($program $command --help 2>/dev/null)
        end
    end

    switch "$option"
        case --only
            __nodal_paths $program "$word" $tree
        case '-*'
            __fish_complete_path $word
        case '*'
            if set -l parts (string match -rg -- '^(--[^=]+=)(.*)' $word)
                string replace -r '^' -- $parts[1] (__fish_complete_path $parts[2])
            else if string match -q -- '-*' $word
                string match -rg -- '^  (-[^ ]*)' $help | string split ,
            else if test -z "$command"
                string replace -rf -- '^  ([a-z][^ ]*) +(.*)' '$1\t$2' $help
            else if string match -q -- '  path *' $help
                __nodal_paths $program "$word" $tree
            else
                __fish_complete_path $word
            end
    end
end

complete -c nodal -f -a '(__nodal_complete)'
