# cmake -DCHECKS=<folder of the checks> -DTREE=<scratch folder> -DREADELF=… -DNM=… -DCXX=<compiler> -P ProgramsSelfTest.cmake:
# proves on small programs that each check of programs passes on a good one and fails, with the reason, on each kind of bad one.
cmake_minimum_required(VERSION 3.25)
set(failures "")
set(hardened -O2 -fPIE -pie -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -fstack-protector-strong -Wl,-z,relro,-z,now,-z,noexecstack)
# Copies into a buffer of known size, which is what fortifying and the guard of the stack are about.
set(copying "#include <cstring>\nint main(int n, char** words) { char text[9]; std::strcpy(text, words[n - 1]); ")
string(APPEND copying "return text[n]; }\n")
file(REMOVE_RECURSE ${TREE})

# expect(check, message, text of the program, flags...): the check passes where `message` is empty, else it fails with it.
function(expect check message text)
  file(WRITE ${TREE}/program.cpp "${text}")
  execute_process(COMMAND ${CXX} -o ${TREE}/program ${TREE}/program.cpp ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${CMAKE_COMMAND} -DREADELF=${READELF} -DNM=${NM} -DPROGRAMS=${TREE}/program -P ${CHECKS}/${check}.cmake
      RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  string(REGEX REPLACE "[ \n]+" " " output "${output}")
  string(FIND "${output}" "${message}" found)
  if("${message}" STREQUAL "" AND NOT result EQUAL 0)
    set(failures "${failures}${check} refuses a good program: ${output}\n" PARENT_SCOPE)
  elseif(NOT "${message}" STREQUAL "" AND (result EQUAL 0 OR found EQUAL -1))
    set(failures "${failures}${check} should say '${message}' but says: ${output}\n" PARENT_SCOPE)
  endif()
endfunction()

expect(Hardened "" "${copying}" ${hardened})
expect(Hardened "stands at a fixed address" "${copying}" ${hardened} -no-pie)
expect(Hardened "can be written to" "${copying}" ${hardened} -Wl,-z,norelro)
expect(Hardened "are filled late" "${copying}" ${hardened} -Wl,-z,lazy)
expect(Hardened "stack can be executed" "${copying}" ${hardened} -Wl,-z,execstack)
expect(Hardened "stack is not guarded" "${copying}" ${hardened} -fno-stack-protector)
expect(Hardened "no library call is fortified" "${copying}" ${hardened} -U_FORTIFY_SOURCE)

expect(Calls "" "${copying}")
expect(Calls "calls system" "#include <cstdlib>\nint main() { return std::system(\"true\"); }\n")
expect(Calls "calls execvp" "#include <unistd.h>\nint main(int, char** words) { return execvp(words[0], words); }\n")
expect(Calls "calls socket" "#include <sys/socket.h>\nint main() { return socket(AF_INET, SOCK_STREAM, 0); }\n")
expect(Calls "QProcess" "struct QProcess { QProcess(); };\nint f() { QProcess process; return 0; }\n" -shared -fPIC)
expect(Calls "QTcpSocket" "struct QTcpSocket { void f() const; };\nvoid g() { QTcpSocket().f(); }\n" -shared -fPIC)

file(REMOVE_RECURSE ${TREE})
if(failures)
  message(FATAL_ERROR "${failures}")
endif()
