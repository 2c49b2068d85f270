# The instrument image: ${CMAKE_BINARY_DIR}/image holds what the instrument's
# flash holds (program, module library, drivers, etc_gui/opm.ini, language
# packs, registry hive, bench file). `make run` starts the program from it.

add_custom_target(instrument-image
  COMMAND ${PROJECT_SOURCE_DIR}/scripts/make-image.sh ${CMAKE_BINARY_DIR} ${CMAKE_BINARY_DIR}/image
  DEPENDS tavix_otdr tavix_sim_bench tavix_sim_olt tavix_sim_btd tavix_btd opm-bench
  COMMENT "Assembling the instrument image in ${CMAKE_BINARY_DIR}/image"
  VERBATIM)

# The program, its service tool and the language packs are defined by folders
# configured after this one; look for them once the whole tree is read.
function(opm_image_optional_parts)
  foreach(part language-packs PowerMeterApp opm-probe)
    if(TARGET ${part})
      add_dependencies(instrument-image ${part})
    endif()
  endforeach()
endfunction()
cmake_language(DEFER DIRECTORY ${PROJECT_SOURCE_DIR} CALL opm_image_optional_parts)
