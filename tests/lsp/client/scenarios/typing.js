// Diagnostics appear, change and disappear while the text is typed, and disappear with the document.
'use strict';

module.exports = async (editor) => {
  await editor.start();
  await editor.open('shop.xml');
  await editor.diagnostics('shop.xml');
  await editor.replace('shop.xml', 'int64', 'int32');
  const [refused] = await editor.diagnostics('shop.xml');
  await editor.request('workspace/textDocumentContent', { uri: refused.relatedInformation[0].location.uri });
  await editor.replace('shop.xml', '"int32"/>', '"int32');
  await editor.diagnostics('shop.xml');
  await editor.replace('shop.xml', '"int32', '"int64"/>');
  await editor.diagnostics('shop.xml');
  await editor.replace('shop.xml', 'uint32', 'unit32');
  await editor.diagnostics('shop.xml');
  await editor.close('shop.xml');
  await editor.diagnostics('shop.xml');
};
