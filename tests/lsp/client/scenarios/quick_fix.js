// The suggestion of a finding, applied.
'use strict';

module.exports = async (editor) => {
  await editor.start();
  await editor.open('shop.xml');
  await editor.diagnostics('shop.xml');
  await editor.replace('shop.xml', 'int64', 'int32');
  const diagnostics = await editor.diagnostics('shop.xml');
  const [fix] = await editor.actions('shop.xml', 'int32"/>\n    <primary', 'quickfix', diagnostics);
  await editor.apply(fix.edit);
  await editor.diagnostics('shop.xml');
};
