# Fails unless the README shows the host program letter for letter.
file(READ ${README} readme)
file(READ ${PROGRAM} program)
string(FIND "${readme}" "${program}" place)
if(place EQUAL -1)
    message(FATAL_ERROR "${README} shows another program than ${PROGRAM}: copy the file into it")
endif()
