# cmake -DREADELF=<program> -DNM=<program> -DPROGRAMS=<file,...> -P Calls.cmake: fails on a program or module whose own code
# calls a shell, starts a program or opens a connection, or that is linked with a library for that.
#
# What the libraries do by themselves is not seen here: the tests of lumo-cli watch the running program.
cmake_minimum_required(VERSION 3.25)
set(functions "system|popen|exec[lv]p?e?|execvpe|execveat|fexecve|v?fork|clone|posix_spawnp?|wordexp|dlmopen")
string(APPEND functions "|socket|socketpair|connect|bind|listen|accept4?|send(to|m?msg)?|recv(from|m?msg)?|getaddrinfo|gethostby[a-z_]+")
# In the mangled names of C++: the length of a class's name stands before it.
set(classes "Q(Process|DesktopServices|Network[A-Za-z]*|Abstract(Socket|Server)|(Tcp|Udp|Ssl|Local)(Socket|Server)|HostInfo|DBus[A-Za-z]*)")
set(libraries "Qt6(Network|DBus|WebEngine|WebSockets)[A-Za-z]*|curl|ssl|ssh2?")
set(failures "")
string(REPLACE "," ";" PROGRAMS "${PROGRAMS}")
if(NOT PROGRAMS)
  message(FATAL_ERROR "no program given: nothing was checked")
endif()

foreach(program IN LISTS PROGRAMS)
  if(NOT EXISTS ${program})
    message(STATUS "${program} is not built: skipped")
    continue()
  endif()
  execute_process(COMMAND ${NM} -D --undefined-only ${program} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL " (U|w) (${functions})(@[^\n]*)?\n" called "${symbols}")
  string(REGEX MATCHALL " (U|w) _Z[A-Za-z0-9_]*[0-9]${classes}[CDEKa-z0-9][^\n]*\n" used "${symbols}")
  foreach(symbol IN LISTS called used)
    string(REGEX REPLACE "^ . |@.*|\n" "" symbol "${symbol}")
    string(APPEND failures "  ${program}: calls ${symbol}\n")
  endforeach()
  execute_process(COMMAND ${READELF} -dW ${program} OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "NEEDED[^\n]*\\[lib(${libraries})\\.so[^\n]*" linked "${dynamic}")
  foreach(library IN LISTS linked)
    string(REGEX REPLACE ".*\\[|\\].*" "" library "${library}")
    string(APPEND failures "  ${program}: is linked with ${library}\n")
  endforeach()
endforeach()

if(failures)
  message(FATAL_ERROR "shells, programs or connections:\n${failures}")
endif()
