# SPDX-License-Identifier: MIT
# Settings of the site; its pages are laid out beside this file by tools/docs_site.py.
project = "luxvm"
copyright = "the luxvm authors, MIT licence"
html_title = "luxvm"
extensions = ["myst_parser"]
myst_heading_anchors = 4
root_doc = "index"
exclude_patterns = ["extra"]

html_theme = "sphinx_rtd_theme"
html_static_path = ["_static"]
html_css_files = ["style.css"]
html_extra_path = ["extra"]
html_copy_source = False
html_show_sourcelink = False
# A page that was opened as a file may not fetch others to show what was found in them.
html_show_search_summary = False
html_use_index = False
html_show_sphinx = False
highlight_language = "none"
smartquotes = False
add_function_parentheses = False
html_theme_options = {"navigation_depth": 2, "collapse_navigation": True}
