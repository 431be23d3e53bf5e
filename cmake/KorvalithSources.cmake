# Installs every header found below `root` into the package's include folder,
# keeping the folder structure, so that installed code includes them as the tree does.
function(korvalith_install_headers root)
  install(DIRECTORY ${root}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/korvalith
          FILES_MATCHING PATTERN "*.h")
endfunction()
