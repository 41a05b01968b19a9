# Counts which lines and branches of the product are run. Counting is for the product alone; what is
# linked to it writes the counts.
if(IPODCTL_COVERAGE)
  add_link_options(--coverage)
endif()
