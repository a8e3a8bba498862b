# Makes the help files from the manual's chapters: run as a script by the target `manual`.
#   cmake -DCHAPTERS=<folder> -DOUTPUT=<folder> -DCMARK_GFM=<program> -DGENERATOR=<program> -P build_manual.cmake
# Each chapter becomes one page; its first heading is its title in the contents, every heading is an
# entry of the index. OUTPUT then holds "ampdesk.hlp" (the collection) and "ampdesk.qch" (the pages).

set(pages ${OUTPUT}/pages)
file(REMOVE_RECURSE ${pages})
file(MAKE_DIRECTORY ${pages})

# A semicolon would split a text into a list: it travels as another character.
string(ASCII 31 semicolon)
function(write_text path text)
  string(REPLACE "${semicolon}" ";" text "${text}")
  file(WRITE ${path} "${text}")
endfunction()

set(sections "")
set(keywords "")
set(files "")
file(GLOB chapters ${CHAPTERS}/*.md)
list(SORT chapters)
foreach(chapter IN LISTS chapters)
  get_filename_component(name ${chapter} NAME_WE)
  execute_process(COMMAND ${CMARK_GFM} --extension table ${chapter} OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE ";" "${semicolon}" body "${body}")
  string(REGEX REPLACE "href=\"([A-Za-z0-9_-]+)\\.md" "href=\"\\1.html" body "${body}")
  string(REPLACE "<table>" "<table border=\"1\" cellspacing=\"0\" cellpadding=\"4\">" body "${body}")

  # Headings get anchors; the first is the chapter's title.
  string(REGEX MATCHALL "<h[1-3]>[^\n]*</h[1-3]>" headings "${body}")
  set(title ${name})
  set(entries "")
  set(number 0)
  foreach(heading IN LISTS headings)
    string(REGEX REPLACE "</?[a-z0-9]+>" "" text "${heading}")
    string(REPLACE "<h" "<a name=\"s${number}\"></a><h" anchored "${heading}")
    string(REPLACE "${heading}" "${anchored}" body "${body}")
    # cmark has escaped the text already, all but what an attribute adds.
    string(APPEND keywords "      <keyword name=\"${text}\" ref=\"${name}.html#s${number}\"/>\n")
    if(number EQUAL 0)
      set(title "${text}")
    else()
      string(APPEND entries "        <section title=\"${text}\" ref=\"${name}.html#s${number}\"/>\n")
    endif()
    math(EXPR number "${number} + 1")
  endforeach()
  write_text(${pages}/${name}.html
    "<html><head><meta charset=\"utf-8\"><title>${title}</title></head><body>\n${body}</body></html>\n")
  string(APPEND sections "      <section title=\"${title}\" ref=\"${name}.html\">\n${entries}      </section>\n")
  string(APPEND files "      <file>${name}.html</file>\n")
endforeach()

file(GLOB pictures RELATIVE ${CHAPTERS} ${CHAPTERS}/pictures/*.png)
foreach(picture IN LISTS pictures)
  configure_file(${CHAPTERS}/${picture} ${pages}/${picture} COPYONLY)
  string(APPEND files "      <file>${picture}</file>\n")
endforeach()

write_text(${pages}/ampdesk.qhp "<?xml version=\"1.0\" encoding=\"UTF-8\"?>
<QtHelpProject version=\"1.0\">
  <namespace>ampdesk.manual</namespace>
  <virtualFolder>manual</virtualFolder>
  <filterSection>
    <toc>
${sections}    </toc>
    <keywords>
${keywords}    </keywords>
    <files>
${files}    </files>
  </filterSection>
</QtHelpProject>
")
file(WRITE ${pages}/ampdesk.qhcp "<?xml version=\"1.0\" encoding=\"UTF-8\"?>
<QHelpCollectionProject version=\"1.0\">
  <docFiles>
    <register>
      <file>ampdesk.qch</file>
    </register>
  </docFiles>
</QHelpCollectionProject>
")
execute_process(COMMAND ${GENERATOR} ${pages}/ampdesk.qhp -o ${pages}/ampdesk.qch OUTPUT_QUIET
  COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE ${OUTPUT}/ampdesk.hlp)
execute_process(COMMAND ${GENERATOR} ${pages}/ampdesk.qhcp -o ${pages}/ampdesk.hlp OUTPUT_QUIET
  COMMAND_ERROR_IS_FATAL ANY)
foreach(made ampdesk.hlp ampdesk.qch)
  file(RENAME ${pages}/${made} ${OUTPUT}/${made})
endforeach()
