# Every target of our own builds with the same strict warning set.
function(varnadp_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Werror)
endfunction()
