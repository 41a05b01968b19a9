# Counts the runs of lines and branches of the library only. The programs that are linked to it
# write the numbers.
if(IPODCTL_COVERAGE)
  add_link_options(--coverage)
endif()
