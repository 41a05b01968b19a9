# Instruments everything in the build, so that an error in one library is seen in every program.
if(IPODCTL_SANITIZE)
  add_compile_options(-fsanitize=${IPODCTL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${IPODCTL_SANITIZE})
endif()
