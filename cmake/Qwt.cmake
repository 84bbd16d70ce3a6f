# Every plot is Qwt's. Debian 12 has it for Qt 5 only: with Qt 6 the forms with plots are left out.

set(tirn_plot_files "/palette(form[a-z]*|page|plot)(_test)?\\.(cpp|h)$")
find_path(TIRN_QWT_HEADERS qwt_plot.h PATH_SUFFIXES qwt)
find_library(TIRN_QWT_LIBRARY NAMES qwt-qt${TIRN_QT})
if(TIRN_QWT_HEADERS AND TIRN_QWT_LIBRARY)
    # Qwt 6.1 declares constructor and destructor of a template with their arguments, which C++20 forbids: its headers
    # are used from a copy in which that is mended.
    set(headers ${CMAKE_BINARY_DIR}/qwt)
    set(mended ${headers}/qwt_series_store.h)
    file(COPY ${TIRN_QWT_HEADERS}/ DESTINATION ${headers} FILES_MATCHING PATTERN "*.h"
         PATTERN qwt_series_store.h EXCLUDE)
    file(READ ${TIRN_QWT_HEADERS}/qwt_series_store.h text)
    string(REPLACE "QwtSeriesStore<T>();" "QwtSeriesStore();" text "${text}")
    # What is the same keeps its time.
    file(WRITE ${mended}.new "${text}")
    file(COPY_FILE ${mended}.new ${mended} ONLY_IF_DIFFERENT)
    add_library(Qwt INTERFACE)
    target_include_directories(Qwt SYSTEM INTERFACE ${headers})
    target_link_libraries(Qwt INTERFACE ${TIRN_QWT_LIBRARY})
    target_compile_definitions(Qwt INTERFACE TIRN_HAS_PLOTS)
elseif(TIRN_QT EQUAL 5)
    message(FATAL_ERROR "Qwt was not found (Debian: libqwt-qt5-dev)")
endif()
