# The Windows build's editor under wine on an X server of its own: opened,
# dragged and clicked by a small Windows host, compared with the headless
# panel, opened and closed many times; its clipboard against the system's.
add_test(NAME host_wine_editor
         COMMAND ${TENDRANE_HOST_DIR}/windows/wine_editor_test.sh ${PROJECT_SOURCE_DIR} ${TENDRANE_WIN64_BUILD}
                 $<TARGET_FILE:tendrane> ${PROJECT_BINARY_DIR}/host-wine-editor)
set_tests_properties(host_wine_editor PROPERTIES LABELS host TIMEOUT 2400
                     ENVIRONMENT "XDG_CONFIG_HOME=${PROJECT_BINARY_DIR}/host-config"
                     RESOURCE_LOCK tendrane_win64_build SKIP_RETURN_CODE 77)
# The render test under wine builds in the same folder: one build there at
# a time.
set_property(TEST host_wine_render APPEND PROPERTY RESOURCE_LOCK tendrane_win64_build)
