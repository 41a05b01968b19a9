# Instruments everything in the build, so that an error in one library is seen in every program.
if(IPODCTL_SANITIZE)
  add_compile_options(-fsanitize=${IPODCTL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  # The product and the tests have no type information to check objects against.
  add_compile_options(-fno-sanitize=vptr)
  add_link_options(-fsanitize=${IPODCTL_SANITIZE})
endif()
