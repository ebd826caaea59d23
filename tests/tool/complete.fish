# What fish offers at the end of a line: fish complete.fish KORVELCHECK LINE... Each line, then its offers, one a line.
$argv[1] completion fish | source
for line in $argv[2..]
    echo "> $line"
    complete -C "$line" | string replace -r '\t.*' '' | sort
end
