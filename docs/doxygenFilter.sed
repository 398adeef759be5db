# Doxygen input filter: the headers document their declarations with plain // comments, which
# doxygen ignores; turned into /// (and trailing ones into ///<) they become the reference.
# Every line stays where it was, so the reference points at the right lines.
s#^\([[:space:]]*\)//\([^/]\|$\)#\1///\2#
s#\([;,{]\)\([[:space:]]\{1,\}\)//\([^/]\)#\1\2///<\3#
# Declarations of explicit specializations doxygen cannot match to their templates.
s#^template <> const zuRtti .*::TYPE;$##
