# Completes roxe's arguments in fish: the tool itself says what may come next.
function __roxe_complete
    roxe complete -- (commandline -opc)[2..] (commandline -ct) 2>/dev/null
end
complete -c roxe -n 'count (__roxe_complete) >/dev/null' -f
complete -c roxe -a '(__roxe_complete)'
