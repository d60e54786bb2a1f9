# A second C library's view of the installed zones: a static program against musl.
file(GLOB musl_specs /usr/lib/*-linux-musl/musl-gcc.specs)
if(musl_specs AND NOT CMAKE_CROSSCOMPILING)
    set(platform ${CMAKE_CURRENT_LIST_DIR}/../../../platform)
    set(probe ${CMAKE_CURRENT_BINARY_DIR}/zone_probe.musl)
    set(probe_sources ${CMAKE_CURRENT_LIST_DIR}/zone_probe.cpp)
    foreach(source common/complain common/folder_lock common/kept_file common/small_file time_zone/time_zone
            time_zone/zone_file time_zone/zone_install time_zone/zone_table time_zone/zone_text)
        list(APPEND probe_sources ${platform}/linux/${source}.cpp)
    endforeach()
    add_custom_command(OUTPUT ${probe}
        COMMAND g++ -specs=${musl_specs} -static -std=c++20 -O1 -D_GNU_SOURCE -fno-exceptions -fno-rtti
            -I${platform} -I${platform}/linux ${probe_sources} -o ${probe}
        DEPENDS ${probe_sources}
        VERBATIM)
    add_custom_target(zone_probe DEPENDS ${probe})
    add_dependencies(platform_linux_test zone_probe)
    target_compile_definitions(platform_linux_test PRIVATE ZONE_PROBE="${probe}")
endif()
