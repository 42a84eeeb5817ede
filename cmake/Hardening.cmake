# What the compiler and the linker can do against damaged input, for every target, in optimised builds without sanitizers:
# checked copies into buffers whose size is known, guarded stacks, checked indirect jumps, addresses that change
# from start to start and tables of library functions that cannot be written to. docs/reliability.md says what it costs.
option(LUMO_HARDEN "Harden optimised builds" ON)
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

# lumo_harden(TARGET): adds the flags to what TARGET hands on.
function(lumo_harden target)
  if(NOT LUMO_HARDEN OR LUMO_SANITIZE)
    return()
  endif()
  set(optimised "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
  # Fortified functions check nothing, and say so in a warning, where nothing is optimised.
  target_compile_options(${target} INTERFACE "$<${optimised}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
  foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER "LUMO_HAS${flag}" has)
    check_cxx_compiler_flag(${flag} ${has})  # not every processor has every one
    if(${has})
      target_compile_options(${target} INTERFACE $<${optimised}:${flag}>)
    endif()
  endforeach()
  target_link_options(${target} INTERFACE "$<${optimised}:LINKER:-z,relro,-z,now,-z,noexecstack>")
endfunction()
