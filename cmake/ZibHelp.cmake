# zib_help(project target)
#   Compiles the HTML help project (.hhp) of this folder, with every file below it, into the program folder.
#   The compiler writes beside its project, so the project is compiled in a copy in the build tree.
function(zib_help project target)
    find_program(CHMCMD chmcmd HINTS ${CMAKE_SOURCE_DIR}/build/tools/bin REQUIRED)
    get_filename_component(name ${project} NAME_WE)
    set(help ${ZIB_PROGRAM_DIR}/${name}.chm)
    set(copy ${CMAKE_CURRENT_BINARY_DIR}/project)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS *.html *.css *.hhc *.hhk *.hhp images/*.png)
    # Its own scan for links does not resolve "..": the test follows the links instead.
    add_custom_command(OUTPUT ${help}
        COMMAND ${CMAKE_COMMAND} -E rm -rf ${copy}
        COMMAND ${CMAKE_COMMAND} -E copy_directory ${CMAKE_CURRENT_SOURCE_DIR} ${copy}
        COMMAND ${CMAKE_COMMAND} -E chdir ${copy} ${CHMCMD} --no-html-scan ${project} > ${copy}.log
        COMMAND ${CMAKE_COMMAND} -E make_directory ${ZIB_PROGRAM_DIR}
        COMMAND ${CMAKE_COMMAND} -E copy ${copy}/${name}.chm ${help}
        DEPENDS ${sources}
        COMMENT "Compiling ${name}.chm"
        VERBATIM)
    add_custom_target(${target} ALL DEPENDS ${help})
endfunction()
