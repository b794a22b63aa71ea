# Plain comments for the reference: at the top of a file, before a declaration, behind a field and below that.
1s|^// |/// \\file\n/// |
s|^( {8,})// |\1///< |
s|^( *)// |\1/// |
s|([^ ] +)// |\1///< |
