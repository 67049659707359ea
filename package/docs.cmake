# Makes HTML of the pages, for cmake --install.
find_program(converter cmark-gfm)
set(folder $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/docs)
file(GLOB pages ${source}/*.md)
file(GLOB pictures ${source}/*.png)
file(COPY ${pictures} DESTINATION ${folder})
if(NOT converter)
  message(WARNING "cmark-gfm is missing: the pages stay as they are, in Markdown")
  file(COPY ${pages} DESTINATION ${folder})
  return()
endif()
foreach(page ${pages})
  get_filename_component(name ${page} NAME_WE)
  execute_process(COMMAND ${converter} -e table ${page} OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "href=\"../demo/menus" "href=\"../menus" body "${body}")
  string(REGEX REPLACE "href=\"([a-z_]+)\\.md" "href=\"\\1.html" body "${body}")
  file(WRITE ${folder}/${name}.html "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>${title}: ${name}</title>\n"
    "<style>body { font: 16px/1.5 sans-serif; max-width: 60em; margin: 2em auto; padding: 0 1em }\n"
    "table { border-collapse: collapse } td, th { border: 1px solid #aaa; padding: 0.3em 0.6em; text-align: left }</style>\n"
    "</head><body>\n${body}</body></html>\n")
endforeach()
