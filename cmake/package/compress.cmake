# Documents that Debian wants compressed, in the folder that is about to be packed.
file(GLOB_RECURSE documents ${CPACK_TEMPORARY_DIRECTORY}/vintrel.1 ${CPACK_TEMPORARY_DIRECTORY}/changelog
     ${CPACK_TEMPORARY_DIRECTORY}/NEWS.md)
foreach(document ${documents})
  execute_process(COMMAND gzip -9nf ${document} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
