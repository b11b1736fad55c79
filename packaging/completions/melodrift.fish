# Completion of melodrift for fish.
complete -c melodrift -s h -l help -d 'Display help and exit'
complete -c melodrift -l help-all -d 'Display help and exit'
complete -c melodrift -s v -l version -d 'Display the version and exit'
complete -c melodrift -l itunes-library -r -F -d 'Use this iTunes library file'
complete -c melodrift -l local -d 'Start in the local clean mode'
